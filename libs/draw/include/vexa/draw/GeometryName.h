#pragma once
namespace vexa::draw {

/// The built-in shapes. Values are stored by hosts and state files: never renumber.
///
/// Sizes are chosen so that a shape's transform carries the size of what it stands for:
/// - Box: the unit cube -0.5..0.5 on every axis (scale it by a box's extent and move it to
///   the box's centre);
/// - Sphere: radius 1 around the origin (scale it by a sphere's radius);
/// - Plane: the unit square -0.5..0.5 in the XZ plane (y = 0) facing +Y, UVs 0..1 with
///   u along +X and v along -Z;
/// - Cylinder, Cone: radius 0.5 around the Y axis from y = -0.5 to 0.5 (the cone's apex at
///   the top), with closed bases;
/// - Torus: around the Y axis, tube centre radius 0.35, tube radius 0.15 (fits -0.5..0.5);
/// - Camera: a viewing pyramid whose eye (apex) is at the origin looking along -Z, its
///   image rectangle at z = -1 with width 1 and height 0.75, plus a small triangle above
///   that rectangle that marks the camera's up (+Y); the pyramid is open at the image end and
///   its optical axis (eye to image centre) is an extra wire line;
/// - Arrow: starts at the origin and points along +Z with length 1 (shaft and head).
enum class GeometryName : int {
    Box = 0,
    Plane = 1,
    Cylinder = 2,
    Sphere = 3,
    Cone = 4,
    Camera = 5,
    Arrow = 6,
    Torus = 7,
};

/// "Box", "Plane", ... for captions; "Unknown" for a value outside the list.
const char* GetGeometryCaption(GeometryName name);
constexpr int kGeometryCount = 8;

} // namespace vexa::draw
