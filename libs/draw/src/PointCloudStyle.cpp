#include <vexa/draw/PointCloudStyle.h>

#include <runa/BinaryStream.h>
#include <runa/rlog.h>

#include <cmath>
#include <cstdint>
#include <string>

namespace vexa::draw {

namespace {

constexpr std::uint32_t kStreamVersion = 2;
constexpr const char* kReadLabel = "vexa::draw::PointCloudStyle::ReadFromStream";

bool IsPointColorMode(int mode)
{
    return mode == ColorMode::Material || mode == ColorMode::PerPoint || mode == ColorMode::Normals;
}

} // namespace

PointCloudStyle::PointCloudStyle()
{
    color = {0.2f, 0.6f, 1.0f};
}

void PointCloudStyle::WriteToStream(std::ostream& out) const
{
    runa::BinaryWriter writer(out);
    writer.WriteVersion(kStreamVersion);
    writer.Write(pointSize);
    writer.Write(cullBackFacing);
    writer.Write(static_cast<std::int32_t>(colorMode));
    writer.Write(useNormals);
    writer.Write(showNormals);
    writer.Write(normalLength);
    material.WriteToStream(out);
    writer.Write(visible);
    writer.Write(color.r).Write(color.g).Write(color.b);
    writer.Write(shadeColors);
    writer.Write(orientedDiscs);
}

bool PointCloudStyle::ReadFromStream(std::istream& in)
{
    runa::BinaryReader reader(in, kReadLabel);
    std::uint32_t version = 0;
    if (!reader.Read(version))
        return false;
    if (version != 1 && version != kStreamVersion) {
        rlog::Warn("Unknown point cloud style version " + std::to_string(version) + " (expected " +
                       std::to_string(kStreamVersion) + "); keeping the current values",
                   kReadLabel);
        return false;
    }

    // A copy takes the fields, so a block cut short anywhere leaves the style as it was.
    PointCloudStyle read(*this);
    std::int32_t mode = 0;
    if (!reader.Read(read.pointSize) || !reader.Read(read.cullBackFacing) || !reader.Read(mode) ||
        !reader.Read(read.useNormals) || !reader.Read(read.showNormals) || !reader.Read(read.normalLength))
        return false;
    if (!read.material.ReadFromStream(in))
        return false;
    if (!reader.Read(read.visible) || !reader.Read(read.color.r) || !reader.Read(read.color.g) ||
        !reader.Read(read.color.b))
        return false;
    if (version >= 2 && (!reader.Read(read.shadeColors) || !reader.Read(read.orientedDiscs)))
        return false;

    read.colorMode = mode;
    if (!IsPointColorMode(read.colorMode)) {
        rlog::Warn("Unknown point colour mode " + std::to_string(read.colorMode) +
                       "; keeping the current values",
                   kReadLabel);
        return false;
    }
    if (!(std::isfinite(read.pointSize) && read.pointSize > 0.0f) ||
        !(std::isfinite(read.normalLength) && read.normalLength > 0.0f)) {
        rlog::Warn("Point size " + std::to_string(read.pointSize) + " or normal length " +
                       std::to_string(read.normalLength) +
                       " is not a positive number; keeping the current values",
                   kReadLabel);
        return false;
    }

    *this = read;
    return true;
}

} // namespace vexa::draw
