#pragma once
// Decompression of LZF streams, as the binary_compressed form of PCD files stores its data.
// The stream comes from a file we do not trust: every read and every write is checked, and a
// stream that would step outside either buffer is reported instead of followed.

#include <cstddef>
#include <span>
#include <string>

namespace vexa::viewer {

struct LzfProblem {
    /// Offset in the compressed input of the control byte where decoding stopped.
    std::size_t inputOffset = 0;
    /// What went wrong, for a one-line message ("a back reference points before the start").
    std::string what;
};

/// Decodes all of `input` into `output`, which must come out filled exactly: a stream that
/// ends early, runs past the end of `output` or refers to bytes before its start fails.
bool LzfDecompress(std::span<const unsigned char> input, std::span<unsigned char> output,
                   LzfProblem& problem);

} // namespace vexa::viewer
