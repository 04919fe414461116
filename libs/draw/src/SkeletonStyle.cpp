#include <vexa/draw/SkeletonStyle.h>

#include "ColorStream.h"

#include <runa/BinaryStream.h>
#include <runa/rlog.h>

#include <cmath>
#include <cstdint>
#include <string>

namespace vexa::draw {

namespace {

constexpr std::uint32_t kStreamVersion = 1;
constexpr const char* kReadLabel = "vexa::draw::SkeletonStyle::ReadFromStream";

using detail::ReadColor;
using detail::WriteColor;

} // namespace

void SkeletonStyle::WriteToStream(std::ostream& out) const
{
    runa::BinaryWriter writer(out);
    writer.WriteVersion(kStreamVersion);
    writer.Write(static_cast<std::int32_t>(renderMode));
    writer.Write(showJoints).Write(enableLighting).Write(showBasis);
    WriteColor(writer, boneColor);
    WriteColor(writer, jointColor);
    writer.Write(lineWidth);
    writer.Write(visible);
    WriteColor(writer, color);
}

bool SkeletonStyle::ReadFromStream(std::istream& in)
{
    runa::BinaryReader reader(in, kReadLabel);
    if (!reader.ReadVersion(kStreamVersion)) {
        if (!reader.Truncated())
            rlog::Warn("Unknown skeleton style version (expected " + std::to_string(kStreamVersion) + ")",
                       kReadLabel);
        return false;
    }

    // Everything lands in a copy first so a damaged block leaves the style as it was.
    SkeletonStyle read(*this);
    std::int32_t mode = 0;
    const bool ok = reader.Read(mode) && reader.Read(read.showJoints) && reader.Read(read.enableLighting) &&
                    reader.Read(read.showBasis) && ReadColor(reader, read.boneColor) &&
                    ReadColor(reader, read.jointColor) && reader.Read(read.lineWidth) &&
                    reader.Read(read.visible) && ReadColor(reader, read.color);
    if (!ok)
        return false;
    if (mode < SkeletonRenderMode::Octahedron || mode > SkeletonRenderMode::Stickman) {
        rlog::Warn("Unknown skeleton render mode " + std::to_string(mode) + "; style left unchanged",
                   kReadLabel);
        return false;
    }
    if (!std::isfinite(read.lineWidth) || read.lineWidth <= 0.0f) {
        rlog::Warn("Line width " + std::to_string(read.lineWidth) +
                       " is not a positive number; style left unchanged",
                   kReadLabel);
        return false;
    }
    read.renderMode = mode;
    *this = read;
    return true;
}

} // namespace vexa::draw
