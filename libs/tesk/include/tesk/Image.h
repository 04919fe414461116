#pragma once
// A 2D image handed to the viewer: width x height pixels of 1 to 4 channels (gray, gray +
// alpha, RGB, RGBA), stored as 8-bit or 32-bit float values, contiguous, row-major, top row
// first, channels interleaved. An image with no pixels is valid and simply empty.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace tesk {

enum class PixelFormat : std::uint8_t {
    UInt8 = 0,   ///< 0..255 per channel
    Float32 = 1, ///< any float; 0..1 is the displayable range
};

class Image {
public:
    Image() = default;
    /// Copies (span) or takes over (vector) the host's pixels; `pixels` must hold exactly
    /// width * height * channels values. On any mismatch the image stays empty (logged).
    Image(std::uint32_t width, std::uint32_t height, int channels, std::span<const std::uint8_t> pixels);
    Image(std::uint32_t width, std::uint32_t height, int channels, std::vector<std::uint8_t>&& pixels);
    Image(std::uint32_t width, std::uint32_t height, int channels, std::span<const float> pixels);
    Image(std::uint32_t width, std::uint32_t height, int channels, std::vector<float>&& pixels);

    /// Zero-filled pixels. False (logged, image unchanged) for channels outside 1..4 or a size
    /// that cannot be allocated.
    bool Create(std::uint32_t width, std::uint32_t height, int channels, PixelFormat format);

    /// As the constructors, but report failure and keep the previous contents on a mismatch.
    bool SetPixels(std::uint32_t width, std::uint32_t height, int channels,
                   std::span<const std::uint8_t> pixels);
    bool SetPixels(std::uint32_t width, std::uint32_t height, int channels,
                   std::vector<std::uint8_t>&& pixels);
    bool SetPixels(std::uint32_t width, std::uint32_t height, int channels, std::span<const float> pixels);
    bool SetPixels(std::uint32_t width, std::uint32_t height, int channels, std::vector<float>&& pixels);

    /// Back to an empty 0 x 0 image (format and channel count kept).
    void Clear();

    std::uint32_t GetWidth() const { return width_; }
    std::uint32_t GetHeight() const { return height_; }
    int GetChannels() const { return channels_; }
    PixelFormat GetFormat() const { return format_; }
    bool IsEmpty() const { return width_ == 0 || height_ == 0; }

    /// Values per row / in total, and bytes in total.
    std::size_t RowValueCount() const
    {
        return static_cast<std::size_t>(width_) * static_cast<std::size_t>(channels_);
    }
    std::size_t ValueCount() const { return RowValueCount() * height_; }
    std::size_t SizeInBytes() const;

    /// The pixels in their stored format; an empty span when the image has the other format.
    std::span<const std::uint8_t> GetUInt8Data() const;
    std::span<std::uint8_t> GetMutableUInt8Data();
    std::span<const float> GetFloatData() const;
    std::span<float> GetMutableFloatData();
    /// The stored pixels as raw bytes, whichever the format (e.g. for a texture upload).
    const void* Data() const;

    /// Channel `c` of pixel (x, y) as a float: 8-bit values are scaled to 0..1, floats are
    /// returned as stored. 0 (logged) for coordinates or channels out of range.
    float At(std::uint32_t x, std::uint32_t y, int c) const;

    /// The same image in the other format: bytes / 255 to floats; floats clamped to 0..1 and
    /// rounded to bytes (NaN becomes 0).
    Image ToUInt8() const;
    Image ToFloat32() const;

    /// Replaces the image by the file's pixels: 8-bit files load as UInt8, 16-bit ones as
    /// Float32 (scaled to 0..1). False (logged with the file name and the decoder's reason,
    /// image unchanged) when the file cannot be read.
    bool LoadPng(const std::string& path);
    /// An empty image when the file cannot be read (logged).
    static Image FromPng(const std::string& path);
    /// As LoadPng for any file the decoder knows by its contents: PNG, JPEG, BMP, TGA, ...
    bool Load(const std::string& path);
    /// An empty image when the file cannot be read (logged with its name).
    static Image FromFile(const std::string& path);
    /// Writes an 8-bit PNG (float images are converted as by ToUInt8). False (logged) for an
    /// empty image or when the file cannot be written.
    bool SavePng(const std::string& path) const;

    bool operator==(const Image&) const = default;

private:
    static bool CheckShape(std::uint32_t width, std::uint32_t height, int channels, std::size_t given,
                           const char* label);
    bool LoadFile(const std::string& path, const char* label);
    void Store(std::uint32_t width, std::uint32_t height, int channels, std::vector<std::uint8_t>&& pixels);
    void Store(std::uint32_t width, std::uint32_t height, int channels, std::vector<float>&& pixels);

    std::uint32_t width_ = 0;
    std::uint32_t height_ = 0;
    int channels_ = 4;
    PixelFormat format_ = PixelFormat::UInt8;
    // Only the vector of the current format holds pixels; the other is empty.
    std::vector<std::uint8_t> bytes_;
    std::vector<float> floats_;
};

} // namespace tesk
