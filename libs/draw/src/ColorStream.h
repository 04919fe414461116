#pragma once
// Colours in style blocks: three little-endian floats, red first.

#include <runa/BinaryStream.h>
#include <tesk/Color.h>

namespace vexa::draw::detail {

inline void WriteColor(runa::BinaryWriter& writer, const tesk::Color3f& color)
{
    writer.Write(color.r).Write(color.g).Write(color.b);
}

/// Leaves `color` untouched unless all three components could be read.
inline bool ReadColor(runa::BinaryReader& reader, tesk::Color3f& color)
{
    tesk::Color3f value;
    if (!reader.Read(value.r) || !reader.Read(value.g) || !reader.Read(value.b))
        return false;
    color = value;
    return true;
}

} // namespace vexa::draw::detail
