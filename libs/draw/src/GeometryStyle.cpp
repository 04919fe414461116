#include <vexa/draw/GeometryStyle.h>

#include "ColorStream.h"

#include <runa/BinaryStream.h>
#include <runa/rlog.h>

#include <cmath>
#include <cstdint>
#include <string>

namespace vexa::draw {

namespace {

constexpr std::uint32_t kStreamVersion = 1;
constexpr const char* kReadLabel = "vexa::draw::GeometryStyle::ReadFromStream";

using detail::ReadColor;
using detail::WriteColor;

bool ReadInt(runa::BinaryReader& reader, int& value)
{
    std::int32_t stored = 0;
    if (!reader.Read(stored))
        return false;
    value = stored;
    return true;
}

bool IsColorMode(int mode)
{
    return mode == ColorMode::Material || mode == ColorMode::PerPoint || mode == ColorMode::Normals ||
           mode == ColorMode::Checker || mode == ColorMode::Texture;
}

} // namespace

void GeometryStyle::WriteToStream(std::ostream& out) const
{
    runa::BinaryWriter writer(out);
    writer.WriteVersion(kStreamVersion);
    writer.Write(static_cast<std::int32_t>(renderMode));
    writer.Write(static_cast<std::int32_t>(normalsSource));
    writer.Write(pointSize);
    writer.Write(cullBackFacing);
    writer.Write(wireThickness);
    WriteColor(writer, wireColor);
    writer.Write(showNormals);
    writer.Write(normalLength);
    WriteColor(writer, normalColor);
    writer.Write(static_cast<std::int32_t>(colorMode));
    writer.Write(useMatcap);
    material.WriteToStream(out);
    writer.Write(visible);
    WriteColor(writer, color);
}

bool GeometryStyle::ReadFromStream(std::istream& in)
{
    runa::BinaryReader reader(in, kReadLabel);
    if (!reader.ReadVersion(kStreamVersion)) {
        if (!reader.Truncated())
            rlog::Warn("Unknown geometry style version (expected " + std::to_string(kStreamVersion) + ")",
                       kReadLabel);
        return false;
    }

    // Everything lands in a copy first so a damaged block leaves the style as it was.
    GeometryStyle read(*this);
    bool ok = ReadInt(reader, read.renderMode) && ReadInt(reader, read.normalsSource) &&
              reader.Read(read.pointSize) && reader.Read(read.cullBackFacing) &&
              reader.Read(read.wireThickness) && ReadColor(reader, read.wireColor) &&
              reader.Read(read.showNormals) && reader.Read(read.normalLength) &&
              ReadColor(reader, read.normalColor) && ReadInt(reader, read.colorMode) &&
              reader.Read(read.useMatcap);
    if (!ok)
        return false;
    if (!read.material.ReadFromStream(in))
        return false;
    if (!reader.Read(read.visible) || !ReadColor(reader, read.color))
        return false;

    if (read.renderMode < RenderMode::Points || read.renderMode > RenderMode::SolidAndWires ||
        read.normalsSource < NormalsSource::Flat || read.normalsSource > NormalsSource::NormalMap ||
        !IsColorMode(read.colorMode)) {
        rlog::Warn("Geometry style holds an unknown mode (render " + std::to_string(read.renderMode) +
                       ", normals " + std::to_string(read.normalsSource) + ", colour " +
                       std::to_string(read.colorMode) + ")",
                   kReadLabel);
        return false;
    }
    if (!std::isfinite(read.pointSize) || !std::isfinite(read.wireThickness) ||
        !std::isfinite(read.normalLength)) {
        rlog::Warn("Geometry style holds a size that is not a number", kReadLabel);
        return false;
    }

    *this = read;
    return true;
}

} // namespace vexa::draw
