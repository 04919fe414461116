#include "vexa/draw/ImageStyle.h"

#include <runa/BinaryStream.h>
#include <runa/rlog.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <string>

namespace vexa::draw {

namespace {

constexpr std::uint32_t kVersion = 1;
const char* const kReadLabel = "vexa::draw::ImageStyle::ReadFromStream";

// The fields in stream order, as pointers (to const when the style is const).
template <class S>
auto Flags(S& s)
{
    return std::array{
        &s.nearestFiltering, &s.fitToViewport, &s.keepAspectRatio, &s.mirrorX,   &s.mirrorY,
        &s.showRed,          &s.showGreen,     &s.showBlue,        &s.showAlpha, &s.colorTransformEnabled};
}

template <class S>
auto Factors(S& s)
{
    return std::array{&s.redMultiplier,  &s.redOffset,  &s.greenMultiplier, &s.greenOffset,
                      &s.blueMultiplier, &s.blueOffset, &s.alphaMultiplier, &s.alphaOffset};
}

template <class S>
auto ChannelShown(S& s, std::size_t channel)
{
    const std::array flags{&s.showRed, &s.showGreen, &s.showBlue, &s.showAlpha};
    return channel < flags.size() ? flags[channel] : nullptr;
}

} // namespace

bool* ImageStyle::GetChannelShown(std::size_t channel)
{
    return ChannelShown(*this, channel);
}

const bool* ImageStyle::GetChannelShown(std::size_t channel) const
{
    return ChannelShown(*this, channel);
}

void ImageStyle::WriteToStream(std::ostream& out) const
{
    runa::BinaryWriter writer(out);
    writer.WriteVersion(kVersion);
    for (const bool* flag : Flags(*this))
        writer.Write(*flag);
    for (const float* factor : Factors(*this))
        writer.Write(*factor);
    Style::WriteToStream(out);
}

bool ImageStyle::ReadFromStream(std::istream& in)
{
    runa::BinaryReader reader(in, kReadLabel);
    std::uint32_t version = 0;
    if (!reader.Read(version))
        return false;
    if (version != kVersion) {
        rlog::Warn("Unknown image style version " + std::to_string(version) + " (expected " +
                       std::to_string(kVersion) + "); style left unchanged",
                   kReadLabel);
        return false;
    }

    // A copy takes the values so that a damaged record changes nothing.
    ImageStyle read(*this);
    for (bool* flag : Flags(read))
        if (!reader.Read(*flag))
            return false;
    for (float* factor : Factors(read)) {
        if (!reader.Read(*factor))
            return false;
        if (!std::isfinite(*factor)) {
            rlog::Warn("Image style holds a colour factor that is not a number; style left unchanged",
                       kReadLabel);
            return false;
        }
    }
    if (!read.Style::ReadFromStream(in))
        return false;

    *this = read;
    return true;
}

} // namespace vexa::draw
