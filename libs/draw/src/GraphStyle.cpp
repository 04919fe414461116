#include "vexa/draw/GraphStyle.h"

#include "ColorStream.h"

#include <runa/BinaryStream.h>
#include <runa/rlog.h>

#include <cstdint>
#include <string>

namespace vexa::draw {

namespace {

constexpr std::uint32_t kVersion = 1;
const char* const kReadLabel = "vexa::draw::GraphStyle::ReadFromStream";

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

} // namespace

GraphStyle::GraphStyle()
{
    // Frame and labels are meant to stay in the background of the data.
    color = tesk::Color3f(0.62f, 0.62f, 0.62f);
}

void GraphStyle::WriteToStream(std::ostream& out) const
{
    runa::BinaryWriter writer(out);
    writer.WriteVersion(kVersion);
    writer.Write(static_cast<std::int32_t>(lineWidth));
    writer.Write(static_cast<std::int32_t>(pointSize));
    WriteColor(writer, lineColor);
    WriteColor(writer, pointColor);
    Style::WriteToStream(out);
}

bool GraphStyle::ReadFromStream(std::istream& in)
{
    runa::BinaryReader reader(in, kReadLabel);
    std::uint32_t version = 0;
    if (!reader.Read(version))
        return false;
    if (version != kVersion) {
        rlog::Warn("Unknown graph style version " + std::to_string(version) + " (expected " +
                       std::to_string(kVersion) + "); style left unchanged",
                   kReadLabel);
        return false;
    }

    // A copy takes the values so that a damaged record changes nothing.
    GraphStyle read(*this);
    if (!ReadInt(reader, read.lineWidth) || !ReadInt(reader, read.pointSize) ||
        !ReadColor(reader, read.lineColor) || !ReadColor(reader, read.pointColor))
        return false;
    if (read.lineWidth < 1 || read.pointSize < 0) {
        rlog::Warn("Graph style holds line width " + std::to_string(read.lineWidth) + " and point size " +
                       std::to_string(read.pointSize) + "; style left unchanged",
                   kReadLabel);
        return false;
    }
    if (!read.Style::ReadFromStream(in))
        return false;

    *this = read;
    return true;
}

} // namespace vexa::draw
