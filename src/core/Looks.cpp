#include "core/Looks.h"

#include <vexa/Version.h>

#include <runa/BinaryStream.h>
#include <runa/rlog.h>

#include <algorithm>

namespace vexa {

namespace {

/// Reads the version word that opens a record and logs a version this code does not know.
bool ReadRecordVersion(runa::BinaryReader& reader, std::uint32_t expected, const char* record,
                       const char* label)
{
    std::uint32_t version = 0;
    if (!reader.Read(version))
        return false;
    if (version != expected) {
        rlog::Warn(std::string("Unsupported ") + record + " version " + std::to_string(version) +
                       ", expected " + std::to_string(expected),
                   label);
        return false;
    }
    return true;
}

void WriteVec3(runa::BinaryWriter& writer, const glm::vec3& v)
{
    writer.Write(v.x).Write(v.y).Write(v.z);
}

bool ReadVec3(runa::BinaryReader& reader, glm::vec3& v)
{
    glm::vec3 read{};
    if (!reader.Read(read.x) || !reader.Read(read.y) || !reader.Read(read.z))
        return false;
    v = read;
    return true;
}

void WriteComposite(runa::BinaryWriter& writer, const CompositeFloat& c)
{
    writer.Write(c.relative).Write(c.pixels);
}

bool ReadComposite(runa::BinaryReader& reader, CompositeFloat& c)
{
    return reader.Read(c.relative) && reader.Read(c.pixels);
}

} // namespace

// ---- CameraLook ----

void CameraLook::WriteToStream(std::ostream& out) const
{
    runa::BinaryWriter writer(out);
    writer.WriteVersion(kStreamVersion);
    WriteVec3(writer, position);
    WriteVec3(writer, target);
    WriteVec3(writer, up);
    writer.Write(fixedRotationEnabled);
    WriteVec3(writer, axis);
}

bool CameraLook::ReadFromStream(std::istream& in)
{
    static constexpr const char* label = "vexa::CameraLook::ReadFromStream";
    runa::BinaryReader reader(in, label);
    if (!ReadRecordVersion(reader, kStreamVersion, "CameraLook", label))
        return false;
    CameraLook read;
    if (!ReadVec3(reader, read.position) || !ReadVec3(reader, read.target) || !ReadVec3(reader, read.up) ||
        !reader.Read(read.fixedRotationEnabled) || !ReadVec3(reader, read.axis))
        return false;
    *this = read;
    return true;
}

// ---- ResourceLook ----

void ResourceLook::WriteToStream(std::ostream& out) const
{
    runa::BinaryWriter writer(out);
    writer.WriteVersion(kStreamVersion);
    // Name and type apart rather than the "type:name" text, which a type holding ':' would not survive.
    writer.WriteString(id.name);
    writer.WriteString(id.type);
    writer.Write(permanent).Write(guiEnabled).Write(selectEnabled).Write(autoSelect);
}

bool ResourceLook::ReadFromStream(std::istream& in)
{
    static constexpr const char* label = "vexa::ResourceLook::ReadFromStream";
    runa::BinaryReader reader(in, label);
    if (!ReadRecordVersion(reader, kStreamVersion, "ResourceLook", label))
        return false;
    ResourceLook read;
    if (!reader.ReadString(read.id.name) || !reader.ReadString(read.id.type) ||
        !reader.Read(read.permanent) || !reader.Read(read.guiEnabled) || !reader.Read(read.selectEnabled) ||
        !reader.Read(read.autoSelect))
        return false;
    *this = std::move(read);
    return true;
}

// ---- ViewareaLook ----

void ViewareaLook::WriteToStream(std::ostream& out) const
{
    runa::BinaryWriter writer(out);
    writer.WriteVersion(kStreamVersion);
    WriteComposite(writer, position.x);
    WriteComposite(writer, position.y);
    WriteComposite(writer, size.width);
    WriteComposite(writer, size.height);
    writer.Write(axes).Write(gridMode).Write(gridUnits);
    writer.Write(sidebarEnabled).Write(sidebarVisible);
    writer.Write(nearPlane).Write(farPlane);
    camera.WriteToStream(out);
    writer.Write(static_cast<std::uint32_t>(resourceLooks.size()));
    for (const auto& resourceLook : resourceLooks)
        resourceLook.WriteToStream(out);
    writer.Write(cameraAnimatorEnabled).Write(settingsEnabled);
}

bool ViewareaLook::ReadFromStream(std::istream& in)
{
    static constexpr const char* label = "vexa::ViewareaLook::ReadFromStream";
    runa::BinaryReader reader(in, label);
    if (!ReadRecordVersion(reader, kStreamVersion, "ViewareaLook", label))
        return false;

    ViewareaLook read;
    if (!ReadComposite(reader, read.position.x) || !ReadComposite(reader, read.position.y) ||
        !ReadComposite(reader, read.size.width) || !ReadComposite(reader, read.size.height) ||
        !reader.Read(read.axes) || !reader.Read(read.gridMode) || !reader.Read(read.gridUnits) ||
        !reader.Read(read.sidebarEnabled) || !reader.Read(read.sidebarVisible) ||
        !reader.Read(read.nearPlane) || !reader.Read(read.farPlane))
        return false;
    if (read.gridMode > GridZX) {
        rlog::Warn("Unknown grid mode " + std::to_string(read.gridMode), label);
        return false;
    }
    if (!read.camera.ReadFromStream(in))
        return false;

    std::uint32_t count = 0;
    if (!reader.Read(count))
        return false;
    // The count comes from the file: grow as records actually arrive instead of trusting it.
    read.resourceLooks.reserve(std::min<std::uint32_t>(count, 64));
    for (std::uint32_t i = 0; i < count; ++i) {
        ResourceLook resourceLook;
        if (!resourceLook.ReadFromStream(in))
            return false;
        read.resourceLooks.push_back(std::move(resourceLook));
    }

    if (!reader.Read(read.cameraAnimatorEnabled) || !reader.Read(read.settingsEnabled))
        return false;
    *this = std::move(read);
    return true;
}

// ---- WindowLook ----

std::string WindowLook::DefaultCaption()
{
    return "VEXA v" + GetLibraryVersion().ToString();
}

} // namespace vexa
