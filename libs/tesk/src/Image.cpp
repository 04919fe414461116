#include "tesk/Image.h"

#include <runa/rlog.h>

#include <stb/stb_image.h>
#include <stb/stb_image_write.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <utility>

namespace tesk {
namespace {

std::optional<std::size_t> CountValues(std::uint32_t width, std::uint32_t height, int channels)
{
    const std::size_t max = std::numeric_limits<std::size_t>::max() / sizeof(float);
    const std::size_t perRow = static_cast<std::size_t>(width) * static_cast<std::size_t>(channels);
    if (height != 0 && perRow > max / height)
        return std::nullopt;
    return perRow * height;
}

std::string Shape(std::uint32_t width, std::uint32_t height, int channels)
{
    return std::to_string(width) + " x " + std::to_string(height) + " x " + std::to_string(channels);
}

std::uint8_t FloatToByte(float value)
{
    if (!(value > 0.0f)) // also NaN
        return 0;
    if (value >= 1.0f)
        return 255;
    return static_cast<std::uint8_t>(std::lround(value * 255.0f));
}

std::string FailureReason()
{
    const char* reason = stbi_failure_reason();
    return reason ? reason : "unknown reason";
}

} // namespace

bool Image::CheckShape(std::uint32_t width, std::uint32_t height, int channels, std::size_t given,
                       const char* label)
{
    if (channels < 1 || channels > 4) {
        rlog::Fail("Images have 1 to 4 channels, not " + std::to_string(channels), label);
        return false;
    }
    const std::optional<std::size_t> needed = CountValues(width, height, channels);
    if (!needed) {
        rlog::Fail("Image size " + Shape(width, height, channels) + " is too large", label);
        return false;
    }
    if (*needed != given) {
        rlog::Fail("A " + Shape(width, height, channels) + " image needs " + std::to_string(*needed) +
                       " values but " + std::to_string(given) + " were given",
                   label);
        return false;
    }
    return true;
}

void Image::Store(std::uint32_t width, std::uint32_t height, int channels, std::vector<std::uint8_t>&& pixels)
{
    width_ = width;
    height_ = height;
    channels_ = channels;
    format_ = PixelFormat::UInt8;
    bytes_ = std::move(pixels);
    floats_ = {};
}

void Image::Store(std::uint32_t width, std::uint32_t height, int channels, std::vector<float>&& pixels)
{
    width_ = width;
    height_ = height;
    channels_ = channels;
    format_ = PixelFormat::Float32;
    floats_ = std::move(pixels);
    bytes_ = {};
}

Image::Image(std::uint32_t width, std::uint32_t height, int channels, std::span<const std::uint8_t> pixels)
{
    if (CheckShape(width, height, channels, pixels.size(), "tesk::Image::Image"))
        Store(width, height, channels, std::vector<std::uint8_t>(pixels.begin(), pixels.end()));
}

Image::Image(std::uint32_t width, std::uint32_t height, int channels, std::vector<std::uint8_t>&& pixels)
{
    if (CheckShape(width, height, channels, pixels.size(), "tesk::Image::Image"))
        Store(width, height, channels, std::move(pixels));
}

Image::Image(std::uint32_t width, std::uint32_t height, int channels, std::span<const float> pixels)
{
    if (CheckShape(width, height, channels, pixels.size(), "tesk::Image::Image"))
        Store(width, height, channels, std::vector<float>(pixels.begin(), pixels.end()));
}

Image::Image(std::uint32_t width, std::uint32_t height, int channels, std::vector<float>&& pixels)
{
    if (CheckShape(width, height, channels, pixels.size(), "tesk::Image::Image"))
        Store(width, height, channels, std::move(pixels));
}

bool Image::Create(std::uint32_t width, std::uint32_t height, int channels, PixelFormat format)
{
    const char* label = "tesk::Image::Create";
    if (channels < 1 || channels > 4) {
        rlog::Fail("Images have 1 to 4 channels, not " + std::to_string(channels), label);
        return false;
    }
    const std::optional<std::size_t> count = CountValues(width, height, channels);
    if (!count) {
        rlog::Fail("Image size " + Shape(width, height, channels) + " is too large", label);
        return false;
    }
    // A size the host computed wrongly must not take the program down.
    try {
        if (format == PixelFormat::UInt8)
            Store(width, height, channels, std::vector<std::uint8_t>(*count, 0));
        else
            Store(width, height, channels, std::vector<float>(*count, 0.0f));
    } catch (const std::bad_alloc&) {
        rlog::Fail("Not enough memory for a " + Shape(width, height, channels) + " image", label);
        return false;
    }
    return true;
}

bool Image::SetPixels(std::uint32_t width, std::uint32_t height, int channels,
                      std::span<const std::uint8_t> pixels)
{
    if (!CheckShape(width, height, channels, pixels.size(), "tesk::Image::SetPixels"))
        return false;
    Store(width, height, channels, std::vector<std::uint8_t>(pixels.begin(), pixels.end()));
    return true;
}

bool Image::SetPixels(std::uint32_t width, std::uint32_t height, int channels,
                      std::vector<std::uint8_t>&& pixels)
{
    if (!CheckShape(width, height, channels, pixels.size(), "tesk::Image::SetPixels"))
        return false;
    Store(width, height, channels, std::move(pixels));
    return true;
}

bool Image::SetPixels(std::uint32_t width, std::uint32_t height, int channels, std::span<const float> pixels)
{
    if (!CheckShape(width, height, channels, pixels.size(), "tesk::Image::SetPixels"))
        return false;
    Store(width, height, channels, std::vector<float>(pixels.begin(), pixels.end()));
    return true;
}

bool Image::SetPixels(std::uint32_t width, std::uint32_t height, int channels, std::vector<float>&& pixels)
{
    if (!CheckShape(width, height, channels, pixels.size(), "tesk::Image::SetPixels"))
        return false;
    Store(width, height, channels, std::move(pixels));
    return true;
}

void Image::Clear()
{
    width_ = 0;
    height_ = 0;
    bytes_ = {};
    floats_ = {};
}

std::size_t Image::SizeInBytes() const
{
    return ValueCount() * (format_ == PixelFormat::UInt8 ? sizeof(std::uint8_t) : sizeof(float));
}

std::span<const std::uint8_t> Image::GetUInt8Data() const
{
    return format_ == PixelFormat::UInt8 ? std::span<const std::uint8_t>(bytes_)
                                         : std::span<const std::uint8_t>();
}

std::span<std::uint8_t> Image::GetMutableUInt8Data()
{
    return format_ == PixelFormat::UInt8 ? std::span<std::uint8_t>(bytes_) : std::span<std::uint8_t>();
}

std::span<const float> Image::GetFloatData() const
{
    return format_ == PixelFormat::Float32 ? std::span<const float>(floats_) : std::span<const float>();
}

std::span<float> Image::GetMutableFloatData()
{
    return format_ == PixelFormat::Float32 ? std::span<float>(floats_) : std::span<float>();
}

const void* Image::Data() const
{
    return format_ == PixelFormat::UInt8 ? static_cast<const void*>(bytes_.data())
                                         : static_cast<const void*>(floats_.data());
}

float Image::At(std::uint32_t x, std::uint32_t y, int c) const
{
    if (x >= width_ || y >= height_ || c < 0 || c >= channels_) {
        rlog::Warn("Pixel (" + std::to_string(x) + ", " + std::to_string(y) + ") channel " +
                       std::to_string(c) + " is outside the " + Shape(width_, height_, channels_) + " image",
                   "tesk::Image::At");
        return 0.0f;
    }
    const std::size_t index = static_cast<std::size_t>(y) * RowValueCount() +
                              static_cast<std::size_t>(x) * static_cast<std::size_t>(channels_) +
                              static_cast<std::size_t>(c);
    return format_ == PixelFormat::UInt8 ? static_cast<float>(bytes_[index]) / 255.0f : floats_[index];
}

Image Image::ToUInt8() const
{
    if (format_ == PixelFormat::UInt8)
        return *this;
    std::vector<std::uint8_t> bytes(floats_.size());
    std::transform(floats_.begin(), floats_.end(), bytes.begin(), FloatToByte);
    Image out;
    out.Store(width_, height_, channels_, std::move(bytes));
    return out;
}

Image Image::ToFloat32() const
{
    if (format_ == PixelFormat::Float32)
        return *this;
    std::vector<float> floats(bytes_.size());
    std::transform(bytes_.begin(), bytes_.end(), floats.begin(),
                   [](std::uint8_t b) { return static_cast<float>(b) / 255.0f; });
    Image out;
    out.Store(width_, height_, channels_, std::move(floats));
    return out;
}

bool Image::LoadPng(const std::string& path)
{
    return LoadFile(path, "tesk::Image::LoadPng");
}

bool Image::Load(const std::string& path)
{
    return LoadFile(path, "tesk::Image::Load");
}

Image Image::FromFile(const std::string& path)
{
    Image image;
    image.Load(path);
    return image;
}

// The decoder recognises the format by the file's contents, not by its name: a JPEG saved
// as ".png" loads as well.
bool Image::LoadFile(const std::string& path, const char* label)
{
    int width = 0;
    int height = 0;
    int channels = 0;
    if (stbi_is_16_bit(path.c_str())) {
        // Sixteen bits do not fit a byte; keep the precision as floats.
        std::unique_ptr<stbi_us, void (*)(void*)> data(
            stbi_load_16(path.c_str(), &width, &height, &channels, 0), stbi_image_free);
        if (!data) {
            rlog::Fail("Can not load \"" + path + "\": " + FailureReason(), label);
            return false;
        }
        const std::size_t count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height) *
                                  static_cast<std::size_t>(channels);
        std::vector<float> floats(count);
        std::transform(data.get(), data.get() + count, floats.begin(),
                       [](stbi_us v) { return static_cast<float>(v) / 65535.0f; });
        Store(static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height), channels,
              std::move(floats));
        return true;
    }
    std::unique_ptr<stbi_uc, void (*)(void*)> data(stbi_load(path.c_str(), &width, &height, &channels, 0),
                                                   stbi_image_free);
    if (!data) {
        rlog::Fail("Can not load \"" + path + "\": " + FailureReason(), label);
        return false;
    }
    const std::size_t count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height) *
                              static_cast<std::size_t>(channels);
    Store(static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height), channels,
          std::vector<std::uint8_t>(data.get(), data.get() + count));
    return true;
}

Image Image::FromPng(const std::string& path)
{
    Image image;
    image.LoadPng(path);
    return image;
}

bool Image::SavePng(const std::string& path) const
{
    const char* label = "tesk::Image::SavePng";
    if (IsEmpty()) {
        rlog::Fail("Can not save an empty (" + Shape(width_, height_, channels_) + ") image to \"" + path +
                       "\"",
                   label);
        return false;
    }
    if (width_ > static_cast<std::uint32_t>(INT_MAX / channels_) ||
        height_ > static_cast<std::uint32_t>(INT_MAX)) {
        rlog::Fail("Image of " + Shape(width_, height_, channels_) + " is too large for PNG", label);
        return false;
    }
    const Image converted = format_ == PixelFormat::UInt8 ? Image() : ToUInt8();
    const std::vector<std::uint8_t>& bytes = format_ == PixelFormat::UInt8 ? bytes_ : converted.bytes_;
    const int stride = static_cast<int>(width_) * channels_;
    if (!stbi_write_png(path.c_str(), static_cast<int>(width_), static_cast<int>(height_), channels_,
                        bytes.data(), stride)) {
        rlog::Fail("Can not write \"" + path + "\"", label);
        return false;
    }
    return true;
}

} // namespace tesk
