#pragma once
// Colours the drawing library uses for its own marks, so that every renderer (and the gadgets
// that set up styles) draws the same kind of mark in the same colour.

#include <tesk/Color.h>

namespace vexa::draw::palette {

/// Normal lines of surfaces and point clouds: a light blue that stays visible on the dark
/// background and on the default grey material.
inline constexpr tesk::Color3f kNormals{0.2f, 0.6f, 1.0f};

} // namespace vexa::draw::palette
