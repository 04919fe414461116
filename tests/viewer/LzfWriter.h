#pragma once
// A small LZF compressor for the tests: greedy, with a brute-force search for the longest
// earlier match, so that streams hold every kind of item the decoder must handle (long and
// short literal runs, short and long back references, references overlapping their output).

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

namespace testing_support {

inline std::string LzfCompress(std::string_view input, std::size_t window = 1024)
{
    std::string out;
    std::string literals;
    const auto flush = [&]() {
        for (std::size_t at = 0; at < literals.size(); at += 32) {
            const std::size_t n = std::min<std::size_t>(32, literals.size() - at);
            out += static_cast<char>(n - 1);
            out.append(literals, at, n);
        }
        literals.clear();
    };
    std::size_t i = 0;
    while (i < input.size()) {
        std::size_t bestLength = 0;
        std::size_t bestDistance = 0;
        for (std::size_t distance = 1; distance <= std::min(i, window); ++distance) {
            std::size_t length = 0;
            while (length < 264 && i + length < input.size() &&
                   input[i + length] == input[i + length - distance])
                ++length;
            if (length > bestLength) {
                bestLength = length;
                bestDistance = distance;
            }
        }
        if (bestLength < 3) {
            literals += input[i++];
            continue;
        }
        flush();
        const std::size_t code = bestLength - 2;
        const std::size_t offset = bestDistance - 1;
        out += static_cast<char>((std::min<std::size_t>(code, 7) << 5) | (offset >> 8));
        if (code >= 7)
            out += static_cast<char>(code - 7);
        out += static_cast<char>(offset & 0xFF);
        i += bestLength;
    }
    flush();
    return out;
}

} // namespace testing_support
