#pragma once
// How one instance of a renderer is drawn. A style is plain data edited by GUI rows between
// frames; renderers read it while drawing. Styles never touch OpenGL.

#include <tesk/Color.h>
#include <tesk/Transform.h>

#include <cstdint>
#include <istream>
#include <ostream>

namespace vexa::draw {

class Style {
public:
    Style() = default;
    virtual ~Style() = default;
    Style(const Style&) = default;
    Style& operator=(const Style&) = default;

    bool visible = true;
    /// Model transform of the instance.
    tesk::Transform transform;
    /// Main colour (debug shapes, line fields, text-like overlays).
    tesk::Color3f color{1.0f, 1.0f, 1.0f};

    /// Writes the style's versioned block: a 32-bit version of the concrete style, then its
    /// fields. Gadget state files embed this block.
    virtual void WriteToStream(std::ostream& out) const;
    /// Reads a block written by the same style type. On a version mismatch or truncation it
    /// returns false and the style keeps every previous value.
    virtual bool ReadFromStream(std::istream& in);
};

} // namespace vexa::draw
