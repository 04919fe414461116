#include "vexa/draw/LineFieldStyle.h"

#include <runa/BinaryStream.h>
#include <runa/rlog.h>

#include <cmath>
#include <cstdint>
#include <string>

namespace vexa::draw {

namespace {

constexpr std::uint32_t kVersion = 1;
const char* const kReadLabel = "vexa::draw::LineFieldStyle::ReadFromStream";

} // namespace

void LineFieldStyle::WriteToStream(std::ostream& out) const
{
    runa::BinaryWriter writer(out);
    writer.WriteVersion(kVersion);
    writer.Write(lineWidth);
    writer.Write(onTop);
    writer.Write(useSegmentColors);
    writer.Write(visible);
    writer.Write(color.r);
    writer.Write(color.g);
    writer.Write(color.b);
}

bool LineFieldStyle::ReadFromStream(std::istream& in)
{
    runa::BinaryReader reader(in, kReadLabel);
    std::uint32_t version = 0;
    if (!reader.Read(version))
        return false;
    if (version != kVersion) {
        rlog::Warn("Unknown line field style version " + std::to_string(version) + " (expected " +
                       std::to_string(kVersion) + ")",
                   kReadLabel);
        return false;
    }

    // Everything is read into locals first so that a short record changes nothing.
    float width = lineWidth;
    bool top = onTop;
    bool segmentColors = useSegmentColors;
    bool isVisible = visible;
    tesk::Color3f c = color;
    if (!reader.Read(width) || !reader.Read(top) || !reader.Read(segmentColors) || !reader.Read(isVisible) ||
        !reader.Read(c.r) || !reader.Read(c.g) || !reader.Read(c.b))
        return false;
    if (!std::isfinite(width) || width <= 0.0f) {
        rlog::Warn("Line width " + std::to_string(width) + " is not a positive number; style left unchanged",
                   kReadLabel);
        return false;
    }

    lineWidth = width;
    onTop = top;
    useSegmentColors = segmentColors;
    visible = isVisible;
    color = c;
    return true;
}

} // namespace vexa::draw
