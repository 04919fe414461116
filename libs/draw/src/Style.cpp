#include "vexa/draw/Style.h"

#include <runa/BinaryStream.h>
#include <runa/rlog.h>

#include <string>

namespace vexa::draw {

namespace {

constexpr std::uint32_t kStyleVersion = 1;

} // namespace

// The transform is not part of the block: the gadget that owns the style places it from its
// resource every time, so a stored one would only fight with it.
void Style::WriteToStream(std::ostream& out) const
{
    runa::BinaryWriter writer(out);
    writer.WriteVersion(kStyleVersion);
    writer.Write(visible);
    writer.Write(color.r).Write(color.g).Write(color.b);
}

bool Style::ReadFromStream(std::istream& in)
{
    runa::BinaryReader reader(in, "vexa::draw::Style::ReadFromStream");
    std::uint32_t version = 0;
    if (!reader.Read(version))
        return false;
    if (version != kStyleVersion) {
        rlog::Warn("Unknown style record version " + std::to_string(version) + "; keeping the current values",
                   "vexa::draw::Style::ReadFromStream");
        return false;
    }
    bool readVisible = visible;
    tesk::Color3f readColor = color;
    if (!(reader.Read(readVisible) && reader.Read(readColor.r) && reader.Read(readColor.g) &&
          reader.Read(readColor.b)))
        return false;
    visible = readVisible;
    color = readColor;
    return true;
}

} // namespace vexa::draw
