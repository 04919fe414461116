#include <vexa/draw/GeometryRenderer.h>

#include <runa/rlog.h>

#include <glm/glm.hpp>

#include <cmath>

#include <cstdint>
#include <numbers>
#include <string>

namespace vexa::draw {

namespace {

constexpr float kTwoPi = 2.0f * std::numbers::pi_v<float>;
constexpr int kRoundSegments = 32;

std::uint32_t NextIndex(const SurfaceData& s)
{
    return static_cast<std::uint32_t>(s.positions.size());
}

void AddVertex(SurfaceData& s, const glm::vec3& position, const glm::vec3& normal, const glm::vec2& uv)
{
    s.positions.push_back(position);
    s.normals.push_back(normal);
    s.uvs.push_back(uv);
}

void AddTriangle(SurfaceData& s, std::uint32_t a, std::uint32_t b, std::uint32_t c)
{
    s.triangles.insert(s.triangles.end(), {a, b, c});
}

/// A flat quad with its own four vertices; `u` x `v` is the outward normal, so the corners
/// run counter-clockwise seen from outside.
void AddQuad(SurfaceData& s, const glm::vec3& center, const glm::vec3& u, const glm::vec3& v)
{
    const glm::vec3 normal = glm::normalize(glm::cross(u, v));
    const std::uint32_t first = NextIndex(s);
    AddVertex(s, center - 0.5f * u - 0.5f * v, normal, {0.0f, 0.0f});
    AddVertex(s, center + 0.5f * u - 0.5f * v, normal, {1.0f, 0.0f});
    AddVertex(s, center + 0.5f * u + 0.5f * v, normal, {1.0f, 1.0f});
    AddVertex(s, center - 0.5f * u + 0.5f * v, normal, {0.0f, 1.0f});
    AddTriangle(s, first, first + 1, first + 2);
    AddTriangle(s, first, first + 2, first + 3);
}

/// Point of the profile plane (radius r, height y) turned by `angle` around +Y. Angle 0 is
/// +Z and a quarter turn is +X, so growing angles run counter-clockwise seen from above.
glm::vec3 AroundY(float r, float y, float angle)
{
    return {r * std::sin(angle), y, r * std::cos(angle)};
}

/// One band of a surface of revolution around +Y: the profile segment from (r0, y0) to
/// (r1, y1), swept a full turn, with its own vertex rings so bands meet at hard edges.
/// The band's front faces the side the profile direction (dr, dy) turned by -90 degrees
/// points to, (dy, -dr); `n0`, `n1` are the profile normals at both ends. A zero radius
/// collapses a ring to a point (disc centres, apexes); its degenerate triangles are left out.
void AddBand(SurfaceData& s, glm::vec2 p0, glm::vec2 p1, glm::vec2 n0, glm::vec2 n1, int segments)
{
    n0 = glm::normalize(n0);
    n1 = glm::normalize(n1);
    const std::uint32_t first = NextIndex(s);
    for (int i = 0; i <= segments; ++i) {
        const float u = static_cast<float>(i) / static_cast<float>(segments);
        const float angle = u * kTwoPi;
        AddVertex(s, AroundY(p0.x, p0.y, angle), AroundY(n0.x, n0.y, angle), {u, 0.0f});
        AddVertex(s, AroundY(p1.x, p1.y, angle), AroundY(n1.x, n1.y, angle), {u, 1.0f});
    }
    for (int i = 0; i < segments; ++i) {
        const std::uint32_t b0 = first + 2u * static_cast<std::uint32_t>(i);
        const std::uint32_t t0 = b0 + 1;
        const std::uint32_t b1 = b0 + 2;
        const std::uint32_t t1 = b0 + 3;
        if (p0.x > 0.0f)
            AddTriangle(s, b0, b1, t1);
        if (p1.x > 0.0f)
            AddTriangle(s, b0, t1, t0);
    }
}

SurfaceData MakeBox()
{
    SurfaceData s;
    s.positions.reserve(24);
    const glm::vec3 x(1.0f, 0.0f, 0.0f), y(0.0f, 1.0f, 0.0f), z(0.0f, 0.0f, 1.0f);
    AddQuad(s, 0.5f * x, -z, y);
    AddQuad(s, -0.5f * x, z, y);
    AddQuad(s, 0.5f * y, x, -z);
    AddQuad(s, -0.5f * y, x, z);
    AddQuad(s, 0.5f * z, x, y);
    AddQuad(s, -0.5f * z, -x, y);
    return s;
}

SurfaceData MakePlane()
{
    SurfaceData s;
    AddQuad(s, glm::vec3(0.0f), {1.0f, 0.0f, 0.0f}, {0.0f, 0.0f, -1.0f});
    return s;
}

SurfaceData MakeCylinder()
{
    SurfaceData s;
    AddBand(s, {0.0f, -0.5f}, {0.5f, -0.5f}, {0.0f, -1.0f}, {0.0f, -1.0f}, kRoundSegments);
    AddBand(s, {0.5f, -0.5f}, {0.5f, 0.5f}, {1.0f, 0.0f}, {1.0f, 0.0f}, kRoundSegments);
    AddBand(s, {0.5f, 0.5f}, {0.0f, 0.5f}, {0.0f, 1.0f}, {0.0f, 1.0f}, kRoundSegments);
    return s;
}

SurfaceData MakeCone()
{
    SurfaceData s;
    // The slant normal (height, radius) of a cone of height 1 and radius 0.5.
    const glm::vec2 slant(1.0f, 0.5f);
    AddBand(s, {0.0f, -0.5f}, {0.5f, -0.5f}, {0.0f, -1.0f}, {0.0f, -1.0f}, kRoundSegments);
    AddBand(s, {0.5f, -0.5f}, {0.0f, 0.5f}, slant, slant, kRoundSegments);
    return s;
}

SurfaceData MakeSphere()
{
    constexpr int kSegments = 32;
    constexpr int kRings = 16;
    SurfaceData s;
    s.positions.reserve((kSegments + 1) * (kRings + 1));
    s.normals.reserve((kSegments + 1) * (kRings + 1));
    s.uvs.reserve((kSegments + 1) * (kRings + 1));
    for (int ring = 0; ring <= kRings; ++ring) {
        const float theta = std::numbers::pi_v<float> * static_cast<float>(ring) / kRings;
        for (int segment = 0; segment <= kSegments; ++segment) {
            const float u = static_cast<float>(segment) / kSegments;
            const glm::vec3 p = AroundY(std::sin(theta), std::cos(theta), u * kTwoPi);
            AddVertex(s, p, p, {u, 1.0f - static_cast<float>(ring) / kRings});
        }
    }
    // Rings run from the top down and segments to the right seen from outside; the pole
    // rows keep only their non-degenerate triangle.
    const auto at = [](int ring, int segment) {
        return static_cast<std::uint32_t>(ring * (kSegments + 1) + segment);
    };
    for (int ring = 0; ring < kRings; ++ring) {
        for (int segment = 0; segment < kSegments; ++segment) {
            const std::uint32_t upperLeft = at(ring, segment), lowerLeft = at(ring + 1, segment);
            const std::uint32_t lowerRight = at(ring + 1, segment + 1), upperRight = at(ring, segment + 1);
            if (ring != kRings - 1)
                AddTriangle(s, upperLeft, lowerLeft, lowerRight);
            if (ring != 0)
                AddTriangle(s, upperLeft, lowerRight, upperRight);
        }
    }
    return s;
}

SurfaceData MakeTorus()
{
    constexpr int kSegments = 32;
    constexpr int kSides = 16;
    constexpr float kMajor = 0.35f;
    constexpr float kMinor = 0.15f;
    SurfaceData s;
    for (int segment = 0; segment <= kSegments; ++segment) {
        const float u = static_cast<float>(segment) / kSegments;
        const glm::vec3 out = AroundY(1.0f, 0.0f, u * kTwoPi);
        for (int side = 0; side <= kSides; ++side) {
            const float v = static_cast<float>(side) / kSides;
            const float psi = v * kTwoPi;
            const glm::vec3 normal = std::cos(psi) * out + std::sin(psi) * glm::vec3(0.0f, 1.0f, 0.0f);
            AddVertex(s, kMajor * out + kMinor * normal, normal, {u, v});
        }
    }
    const auto at = [](int segment, int side) {
        return static_cast<std::uint32_t>(segment * (kSides + 1) + side);
    };
    for (int segment = 0; segment < kSegments; ++segment) {
        for (int side = 0; side < kSides; ++side) {
            AddTriangle(s, at(segment, side), at(segment + 1, side), at(segment + 1, side + 1));
            AddTriangle(s, at(segment, side), at(segment + 1, side + 1), at(segment, side + 1));
        }
    }
    return s;
}

SurfaceData MakeArrow()
{
    constexpr float kShaftRadius = 0.025f;
    constexpr float kHeadRadius = 0.075f;
    constexpr float kShaftLength = 0.75f;
    SurfaceData s;
    const glm::vec2 slant(1.0f, kHeadRadius / (1.0f - kShaftLength));
    AddBand(s, {0.0f, 0.0f}, {kShaftRadius, 0.0f}, {0.0f, -1.0f}, {0.0f, -1.0f}, kRoundSegments);
    AddBand(s, {kShaftRadius, 0.0f}, {kShaftRadius, kShaftLength}, {1.0f, 0.0f}, {1.0f, 0.0f},
            kRoundSegments);
    AddBand(s, {kShaftRadius, kShaftLength}, {kHeadRadius, kShaftLength}, {0.0f, -1.0f}, {0.0f, -1.0f},
            kRoundSegments);
    AddBand(s, {kHeadRadius, kShaftLength}, {0.0f, 1.0f}, slant, slant, kRoundSegments);
    // Built along +Y like the other round shapes, then turned a quarter about X so +Y
    // becomes +Z; a rotation keeps the winding.
    for (glm::vec3& p : s.positions)
        p = glm::vec3(p.x, -p.z, p.y);
    for (glm::vec3& n : s.normals)
        n = glm::vec3(n.x, -n.z, n.y);
    return s;
}

SurfaceData MakeCamera()
{
    constexpr float kHalfWidth = 0.5f;
    constexpr float kHalfHeight = 0.375f;
    SurfaceData s;
    const glm::vec3 eye(0.0f);
    const glm::vec3 corners[4] = {{-kHalfWidth, -kHalfHeight, -1.0f},
                                  {kHalfWidth, -kHalfHeight, -1.0f},
                                  {kHalfWidth, kHalfHeight, -1.0f},
                                  {-kHalfWidth, kHalfHeight, -1.0f}};
    // The pyramid's four sides, each flat with its own vertices; the image end stays open
    // so the marker reads as a view cone rather than a solid block.
    for (int i = 0; i < 4; ++i) {
        const glm::vec3& a = corners[i];
        const glm::vec3& b = corners[(i + 1) % 4];
        const glm::vec3 normal = glm::normalize(glm::cross(a - eye, b - eye));
        const std::uint32_t first = NextIndex(s);
        AddVertex(s, eye, normal, {0.5f, 1.0f});
        AddVertex(s, a, normal, {0.0f, 0.0f});
        AddVertex(s, b, normal, {1.0f, 0.0f});
        AddTriangle(s, first, first + 1, first + 2);
    }
    // The up marker just above the image's top edge, facing the eye's side (+Z).
    const std::uint32_t up = NextIndex(s);
    const glm::vec3 back(0.0f, 0.0f, 1.0f);
    AddVertex(s, {-0.2f, kHalfHeight + 0.05f, -1.0f}, back, {0.0f, 0.0f});
    AddVertex(s, {0.2f, kHalfHeight + 0.05f, -1.0f}, back, {1.0f, 0.0f});
    AddVertex(s, {0.0f, kHalfHeight + 0.25f, -1.0f}, back, {0.5f, 1.0f});
    AddTriangle(s, up, up + 1, up + 2);
    // The optical axis from the eye to the image centre: a line with no face of its own.
    const std::uint32_t centre = NextIndex(s);
    AddVertex(s, {0.0f, 0.0f, -1.0f}, {0.0f, 0.0f, -1.0f}, {0.5f, 0.5f});
    s.lines = {0u, centre};
    return s;
}

} // namespace

GeometryRenderer::GeometryRenderer(GeometryName name) : name_(name)
{
    if (static_cast<int>(name) < 0 || static_cast<int>(name) >= kGeometryCount) {
        rlog::Warn("Unknown geometry " + std::to_string(static_cast<int>(name)) + "; drawing a box instead",
                   "vexa::draw::GeometryRenderer::GeometryRenderer");
        name_ = GeometryName::Box;
    }
    SetSurface(MakeSurface(name_));
}

SurfaceData GeometryRenderer::MakeSurface(GeometryName name)
{
    switch (name) {
    case GeometryName::Box:
        return MakeBox();
    case GeometryName::Plane:
        return MakePlane();
    case GeometryName::Cylinder:
        return MakeCylinder();
    case GeometryName::Sphere:
        return MakeSphere();
    case GeometryName::Cone:
        return MakeCone();
    case GeometryName::Camera:
        return MakeCamera();
    case GeometryName::Arrow:
        return MakeArrow();
    case GeometryName::Torus:
        return MakeTorus();
    }
    rlog::Warn("Unknown geometry " + std::to_string(static_cast<int>(name)),
               "vexa::draw::GeometryRenderer::MakeSurface");
    return {};
}

void GeometryRenderer::ReleaseGpuResources()
{
    ElementRenderer::ReleaseGpuResources();
    // The shape is cheap to rebuild, so the next Render can draw it again.
    SetSurface(MakeSurface(name_));
}

} // namespace vexa::draw
