#pragma once
// The lighting material shared by geometry, mesh and point cloud styles. The GUI links its
// rows straight to these fields, so they stay plain members.

#include <tesk/Color.h>

#include <istream>
#include <ostream>

namespace vexa::draw {

struct Material {
    tesk::Color3f color{0.75f, 0.75f, 0.78f}; ///< red, green, blue, 0..1
    float specular = 0.25f;                   ///< strength of the highlight, 0..1
    float shininess = 32.0f;                  ///< highlight exponent, 1..512
    bool metallic = false;                    ///< highlight tinted by the colour
    bool useLighting = true;                  ///< false draws the flat colour

    /// Version word 1 and the seven fields.
    void WriteToStream(std::ostream& out) const;
    /// Keeps the current values unless a whole record of the known version was read.
    bool ReadFromStream(std::istream& in);

    bool operator==(const Material&) const = default;
};

} // namespace vexa::draw
