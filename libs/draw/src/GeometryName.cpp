#include <vexa/draw/GeometryName.h>

namespace vexa::draw {

const char* GetGeometryCaption(GeometryName name)
{
    switch (name) {
    case GeometryName::Box:
        return "Box";
    case GeometryName::Plane:
        return "Plane";
    case GeometryName::Cylinder:
        return "Cylinder";
    case GeometryName::Sphere:
        return "Sphere";
    case GeometryName::Cone:
        return "Cone";
    case GeometryName::Camera:
        return "Camera";
    case GeometryName::Arrow:
        return "Arrow";
    case GeometryName::Torus:
        return "Torus";
    }
    return "Unknown";
}

} // namespace vexa::draw
