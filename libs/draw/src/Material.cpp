#include "vexa/draw/Material.h"

#include <runa/BinaryStream.h>
#include <runa/rlog.h>

#include <string>

namespace vexa::draw {

namespace {

constexpr std::uint32_t kMaterialVersion = 1;

} // namespace

void Material::WriteToStream(std::ostream& out) const
{
    runa::BinaryWriter writer(out);
    writer.WriteVersion(kMaterialVersion);
    writer.Write(color.r).Write(color.g).Write(color.b);
    writer.Write(specular).Write(shininess);
    writer.Write(metallic).Write(useLighting);
}

bool Material::ReadFromStream(std::istream& in)
{
    runa::BinaryReader reader(in, "vexa::draw::Material::ReadFromStream");
    std::uint32_t version = 0;
    if (!reader.Read(version))
        return false;
    if (version != kMaterialVersion) {
        rlog::Warn("Unknown material record version " + std::to_string(version) +
                       "; keeping the current values",
                   "vexa::draw::Material::ReadFromStream");
        return false;
    }
    // Read into a copy so that a record cut short leaves the material as it was.
    Material read = *this;
    const bool ok = reader.Read(read.color.r) && reader.Read(read.color.g) && reader.Read(read.color.b) &&
                    reader.Read(read.specular) && reader.Read(read.shininess) && reader.Read(read.metallic) &&
                    reader.Read(read.useLighting);
    if (!ok)
        return false;
    *this = read;
    return true;
}

} // namespace vexa::draw
