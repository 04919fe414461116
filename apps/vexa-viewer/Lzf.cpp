#include "Lzf.h"

#include <cstring>

namespace vexa::viewer {

// The stream is a sequence of items, each opened by a control byte c:
//   c < 32:       a literal run of c + 1 bytes copied from the input;
//   c >> 5 < 7:   a back reference of (c >> 5) + 2 bytes, distance ((c & 31) << 8 | next) + 1;
//   c >> 5 == 7:  the same with a length of 7 + next + 2, the distance byte coming after it.
bool LzfDecompress(std::span<const unsigned char> input, std::span<unsigned char> output, LzfProblem& problem)
{
    const unsigned char* in = input.data();
    const std::size_t inSize = input.size();
    unsigned char* out = output.data();
    const std::size_t outSize = output.size();
    std::size_t ip = 0;
    std::size_t op = 0;

    const auto fail = [&](std::size_t at, std::string what) {
        problem.inputOffset = at;
        problem.what = std::move(what);
        return false;
    };

    while (ip < inSize) {
        const std::size_t start = ip;
        const unsigned control = in[ip++];
        if (control < 32) {
            const std::size_t length = control + 1;
            if (length > inSize - ip)
                return fail(start, "a literal run of " + std::to_string(length) +
                                       " bytes runs past the end of the data");
            if (length > outSize - op)
                return fail(start, "the data unpacks to more than " + std::to_string(outSize) + " bytes");
            std::memcpy(out + op, in + ip, length);
            ip += length;
            op += length;
            continue;
        }
        std::size_t length = control >> 5;
        if (length == 7) {
            if (ip >= inSize)
                return fail(start, "a back reference is cut off by the end of the data");
            length += in[ip++];
        }
        if (ip >= inSize)
            return fail(start, "a back reference is cut off by the end of the data");
        const std::size_t distance = ((static_cast<std::size_t>(control & 31) << 8) | in[ip++]) + 1;
        length += 2;
        if (distance > op)
            return fail(start, "a back reference reaches " + std::to_string(distance) +
                                   " bytes back, before the start of the data");
        if (length > outSize - op)
            return fail(start, "the data unpacks to more than " + std::to_string(outSize) + " bytes");
        const unsigned char* from = out + op - distance;
        if (distance >= length) {
            std::memcpy(out + op, from, length);
        } else {
            // Overlapping copies repeat the last `distance` bytes: runs of one value and the like.
            for (std::size_t i = 0; i < length; ++i)
                out[op + i] = from[i];
        }
        op += length;
    }
    if (op != outSize)
        return fail(ip, "the data ends after " + std::to_string(op) + " of " + std::to_string(outSize) +
                            " bytes");
    return true;
}

} // namespace vexa::viewer
