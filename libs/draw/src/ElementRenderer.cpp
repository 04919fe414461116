#include <vexa/draw/ElementRenderer.h>

#include <vexa/draw/RenderContext.h>

#include "LightingUniforms.h"
#include "TransformUniforms.h"

#include <plor/ArrayObject.h>
#include <plor/Program.h>
#include <plor/Texture.h>

#include <runa/rlog.h>

#include <glbinding/gl/gl.h>

#include <glm/glm.hpp>
#include <glm/gtc/type_ptr.hpp>

#include <algorithm>
#include <cmath>
#include <string>
#include <string_view>

using namespace gl;

namespace vexa::draw {

namespace {

constexpr const char* kSetSurfaceLabel = "vexa::draw::ElementRenderer::SetSurface";
constexpr const char* kSetColorsLabel = "vexa::draw::ElementRenderer::SetCustomColors";

// Buffer slots of the vertex array; colours come and go on their own.
constexpr std::size_t kPositionSlot = 0;
constexpr std::size_t kColorSlot = 1;
constexpr std::size_t kNormalSlot = 2;
constexpr std::size_t kUvSlot = 3;

constexpr std::string_view kSurfaceProgram = "geometry.surface";
constexpr std::string_view kPointsProgram = "geometry.points";
constexpr std::string_view kWiresProgram = "geometry.wires";
constexpr std::string_view kNormalsProgram = "geometry.normals";
constexpr std::string_view kFaceNormalsProgram = "geometry.faceNormals";
constexpr plor::ProgramFiles kSurfaceFiles{"geometry/surface.vert", "geometry/surface.frag"};
constexpr plor::ProgramFiles kPointsFiles{"geometry/surface.vert", "geometry/surface.frag", {}, "POINTS"};
constexpr plor::ProgramFiles kWiresFiles{"geometry/surface.vert", "geometry/surface.frag",
                                         "geometry/wires.geom", "WIRES"};
constexpr plor::ProgramFiles kNormalsFiles{"geometry/normals.vert", "geometry/normals.frag",
                                           "geometry/normals.geom"};
constexpr plor::ProgramFiles kFaceNormalsFiles{"geometry/normals.vert", "geometry/normals.frag",
                                               "geometry/normals.geom", "FACE_NORMALS"};

/// Uniform locations of one surface program, fetched again whenever the program is rebuilt.
struct SurfaceUniforms {
    unsigned int program = 0;
    GLint pointSize = -1, viewportSize = -1, lineWidth = -1;
    GLint colorMode = -1, hasColors = -1, flatNormals = -1, useTexture = -1, useMatcap = -1,
          useNormalMap = -1;
    GLint useFixedColor = -1, fixedColor = -1;
    GLint colorTexture = -1, matcap = -1, normalMap = -1;
    TransformUniforms transform;
    LightingUniforms lighting;

    void Refresh(plor::Program& p)
    {
        if (p.GetId() == program)
            return;
        program = p.GetId();
        transform.Refresh(p);
        pointSize = p.GetUniformLocation("uPointSize");
        viewportSize = p.GetUniformLocation("uViewportSize");
        lineWidth = p.GetUniformLocation("uLineWidth");
        colorMode = p.GetUniformLocation("uColorMode");
        hasColors = p.GetUniformLocation("uHasColors");
        flatNormals = p.GetUniformLocation("uFlatNormals");
        useTexture = p.GetUniformLocation("uUseTexture");
        useMatcap = p.GetUniformLocation("uUseMatcap");
        useNormalMap = p.GetUniformLocation("uUseNormalMap");
        useFixedColor = p.GetUniformLocation("uUseFixedColor");
        fixedColor = p.GetUniformLocation("uFixedColor");
        colorTexture = p.GetUniformLocation("uColorTexture");
        matcap = p.GetUniformLocation("uMatcap");
        normalMap = p.GetUniformLocation("uNormalMap");
        lighting.Refresh(p);
    }
};

struct NormalUniforms {
    unsigned int program = 0;
    GLint length = -1, color = -1;
    TransformUniforms transform;

    void Refresh(plor::Program& p)
    {
        if (p.GetId() == program)
            return;
        program = p.GetId();
        transform.Refresh(p);
        length = p.GetUniformLocation("uLength");
        color = p.GetUniformLocation("uColor");
    }
};

/// Everything of one Render that does not depend on the program.
struct Frame {
    glm::mat4 model{1.0f};
    glm::mat3 normalMatrix{1.0f};
    glm::vec2 viewportSize{1.0f};
    float pixelScale = 1.0f;
    bool useTexture = false;
    bool useMatcap = false;
    bool useNormalMap = false;
};

Frame MakeFrame(const RenderContext& context, const GeometryStyle& style)
{
    Frame f;
    f.model = style.transform.GetMatrix();
    // The inverse-transpose keeps normals perpendicular under non-uniform scaling; the
    // transform's own inverse copes with zero scales.
    f.normalMatrix = glm::transpose(glm::mat3(style.transform.GetInverseMatrix()));

    glm::ivec2 size(context.glViewport.z, context.glViewport.w);
    if (size.x <= 0 || size.y <= 0)
        size = context.framebufferSize;
    f.viewportSize = glm::vec2(std::max(size.x, 1), std::max(size.y, 1));
    f.pixelScale = context.pixelScale > 0.0f ? context.pixelScale : 1.0f;

    return f;
}

void SetSurfaceUniforms(const SurfaceUniforms& u, const Frame& f, const RenderContext& context,
                        const GeometryStyle& style, bool hasColors)
{
    u.transform.Upload(context, f.model, f.normalMatrix);
    glUniform1i(u.colorMode, style.colorMode);
    glUniform1i(u.hasColors, hasColors ? 1 : 0);
    glUniform1i(u.flatNormals, style.normalsSource == NormalsSource::Flat ? 1 : 0);
    glUniform1i(u.useTexture, f.useTexture ? 1 : 0);
    glUniform1i(u.useMatcap, f.useMatcap ? 1 : 0);
    glUniform1i(u.useNormalMap, f.useNormalMap ? 1 : 0);
    glUniform1i(u.useFixedColor, 0);
    glUniform1i(u.colorTexture, 0);
    glUniform1i(u.matcap, 1);
    glUniform1i(u.normalMap, 2);
    u.lighting.Upload(context, style.material);
}

std::unique_ptr<plor::Texture> MakeCheckerTexture()
{
    constexpr std::uint32_t kSize = 64;
    constexpr std::uint32_t kCell = 8;
    std::vector<std::uint8_t> pixels(kSize * kSize * 3);
    for (std::uint32_t y = 0; y < kSize; ++y)
        for (std::uint32_t x = 0; x < kSize; ++x) {
            const std::uint8_t value = ((x / kCell + y / kCell) % 2 == 0) ? 230 : 70;
            std::uint8_t* p = &pixels[(y * kSize + x) * 3];
            p[0] = p[1] = p[2] = value;
        }
    auto texture = std::make_unique<plor::Texture>(tesk::Image(kSize, kSize, 3, std::move(pixels)));
    texture->SetFilter(plor::TextureFilter::Nearest);
    texture->SetWrap(plor::TextureWrap::Repeat);
    return texture;
}

} // namespace

struct ElementRenderer::Gpu {
    plor::ArrayObject array;
    std::size_t vertexCount = 0;
    std::size_t triangleIndexCount = 0;
    std::size_t edgeIndexCount = 0;
    bool hasUvs = false;
    bool hasColors = false;
    /// Used when the render context brings no checker of its own.
    std::unique_ptr<plor::Texture> checker;

    SurfaceUniforms surface;
    SurfaceUniforms points;
    SurfaceUniforms wires;
    NormalUniforms normals;
    NormalUniforms faceNormals;

    /// Hands the surface's arrays to the vertex array as they are (uploaded at its first
    /// draw): positions, normals and UVs in buffers of their own, one index buffer holding
    /// the triangles followed by the wire edges.
    void TakeSurface(PreparedSurface&& data)
    {
        const std::size_t count = data.positions.size();
        array.SetBuffer(kPositionSlot, std::move(data.positions), {{0, 3, plor::DataType::Float}});
        if (data.normals.empty())
            array.ClearBuffer(kNormalSlot);
        else
            array.SetBuffer(kNormalSlot, std::move(data.normals), {{1, 3, plor::DataType::Float}});
        hasUvs = !data.uvs.empty();
        if (hasUvs)
            array.SetBuffer(kUvSlot, std::move(data.uvs), {{2, 2, plor::DataType::Float}});
        else
            array.ClearBuffer(kUvSlot);
        array.SetVertexCount(count);

        triangleIndexCount = data.triangleIndexCount;
        edgeIndexCount = data.indices.size() - data.triangleIndexCount;
        array.SetIndices(std::move(data.indices));
        vertexCount = count;
    }

    plor::Texture* Checker(const RenderContext& context)
    {
        if (context.checkerTexture)
            return context.checkerTexture;
        if (!checker)
            checker = MakeCheckerTexture();
        return checker.get();
    }
};

ElementRenderer::ElementRenderer() = default;

ElementRenderer::ElementRenderer(SurfaceData data)
{
    SetSurface(std::move(data));
}

ElementRenderer::~ElementRenderer() = default;

bool ElementRenderer::IsCompatibileWithStyle(const Style& style) const
{
    return dynamic_cast<const GeometryStyle*>(&style) != nullptr;
}

std::vector<std::uint32_t> ElementRenderer::CollectEdges(std::span<const std::uint32_t> triangles,
                                                         std::span<const std::uint32_t> lines)
{
    // Each edge as one 64-bit key (smaller index high), so sorting makes duplicates adjacent.
    std::vector<std::uint64_t> keys;
    keys.reserve(triangles.size() + lines.size() / 2);
    const auto add = [&keys](std::uint32_t a, std::uint32_t b) {
        if (a == b)
            return;
        const std::uint64_t lo = std::min(a, b);
        const std::uint64_t hi = std::max(a, b);
        keys.push_back((lo << 32) | hi);
    };
    for (std::size_t i = 0; i + 2 < triangles.size(); i += 3) {
        add(triangles[i], triangles[i + 1]);
        add(triangles[i + 1], triangles[i + 2]);
        add(triangles[i + 2], triangles[i]);
    }
    for (std::size_t i = 0; i + 1 < lines.size(); i += 2)
        add(lines[i], lines[i + 1]);
    std::sort(keys.begin(), keys.end());
    keys.erase(std::unique(keys.begin(), keys.end()), keys.end());

    std::vector<std::uint32_t> edges;
    edges.reserve(keys.size() * 2);
    for (const std::uint64_t key : keys) {
        edges.push_back(static_cast<std::uint32_t>(key >> 32));
        edges.push_back(static_cast<std::uint32_t>(key & 0xFFFFFFFFu));
    }
    return edges;
}

std::vector<glm::vec3> ElementRenderer::ComputeNormals(std::span<const glm::vec3> positions,
                                                       std::span<const std::uint32_t> triangles)
{
    std::vector<glm::vec3> normals(positions.size(), glm::vec3(0.0f));
    for (std::size_t i = 0; i + 2 < triangles.size(); i += 3) {
        const std::uint32_t a = triangles[i], b = triangles[i + 1], c = triangles[i + 2];
        // The cross product's length is twice the face's area: larger faces weigh more.
        const glm::vec3 faceNormal = glm::cross(positions[b] - positions[a], positions[c] - positions[a]);
        normals[a] += faceNormal;
        normals[b] += faceNormal;
        normals[c] += faceNormal;
    }
    for (glm::vec3& n : normals) {
        const float length = glm::length(n);
        n = length > 0.0f && std::isfinite(length) ? n / length : glm::vec3(0.0f, 0.0f, 1.0f);
    }
    return normals;
}

bool ElementRenderer::SetSurface(SurfaceData data)
{
    const std::size_t count = data.positions.size();
    if (data.triangles.size() % 3 != 0) {
        rlog::Fail("The triangle list holds " + std::to_string(data.triangles.size()) +
                       " indices, not a multiple of 3; keeping the previous surface",
                   kSetSurfaceLabel);
        return false;
    }
    if (data.lines.size() % 2 != 0) {
        rlog::Fail("The line list holds " + std::to_string(data.lines.size()) +
                       " indices, not a multiple of 2; keeping the previous surface",
                   kSetSurfaceLabel);
        return false;
    }
    const auto checkRange = [count](const std::vector<std::uint32_t>& indices, const char* what) {
        const auto bad =
            std::find_if(indices.begin(), indices.end(), [count](std::uint32_t i) { return i >= count; });
        if (bad == indices.end())
            return true;
        rlog::Fail(std::string(what) + " index " + std::to_string(*bad) + " (at position " +
                       std::to_string(bad - indices.begin()) + ") is out of range for " +
                       std::to_string(count) + " vertices; keeping the previous surface",
                   kSetSurfaceLabel);
        return false;
    };
    if (!checkRange(data.triangles, "Triangle") || !checkRange(data.lines, "Line"))
        return false;

    if (data.normals.size() != count) {
        if (!data.normals.empty())
            rlog::Warn("Ignoring " + std::to_string(data.normals.size()) + " normals for " +
                           std::to_string(count) + " vertices; computing them from the faces",
                       kSetSurfaceLabel);
        data.normals = ComputeNormals(data.positions, data.triangles);
    }
    if (!data.uvs.empty() && data.uvs.size() != count) {
        rlog::Warn("Ignoring " + std::to_string(data.uvs.size()) + " UVs for " + std::to_string(count) +
                       " vertices",
                   kSetSurfaceLabel);
        data.uvs.clear();
    }

    // Wire edges are gathered once here, so no frame ever has to.
    const std::vector<std::uint32_t> edges = CollectEdges(data.triangles, data.lines);
    PreparedSurface prepared;
    prepared.triangleIndexCount = data.triangles.size();
    prepared.indices = std::move(data.triangles);
    prepared.indices.reserve(prepared.indices.size() + edges.size());
    prepared.indices.insert(prepared.indices.end(), edges.begin(), edges.end());
    const geom::TAabb<3, float> bounds = geom::TAabb<3, float>::FromPoints(data.positions);
    prepared.positions = std::move(data.positions);
    prepared.normals = std::move(data.normals);
    prepared.uvs = std::move(data.uvs);
    SetPreparedSurface(std::move(prepared), bounds);
    return true;
}

void ElementRenderer::SetPreparedSurface(PreparedSurface&& surface, const geom::TAabb<3, float>& bounds)
{
    const std::size_t count = surface.positions.size();
    bounds_ = bounds;
    if (count != vertexCount_ && hasCustomColors_) {
        hasCustomColors_ = false;
        std::vector<tesk::Color3f>().swap(pendingColors_);
        colorsDirty_ = true;
    }
    vertexCount_ = count;
    triangleCount_ = surface.triangleIndexCount / 3;
    edgeCount_ = (surface.indices.size() - surface.triangleIndexCount) / 2;
    hasUvs_ = !surface.uvs.empty() && count > 0;
    pending_ = std::move(surface);
    surfaceDirty_ = true;
}

bool ElementRenderer::SetCustomColors(std::span<const tesk::Color3f> colors)
{
    return SetCustomColors(std::vector<tesk::Color3f>(colors.begin(), colors.end()));
}

bool ElementRenderer::SetCustomColors(std::vector<tesk::Color3f>&& colors)
{
    if (colors.size() != vertexCount_) {
        rlog::Fail("Got " + std::to_string(colors.size()) + " colours for " + std::to_string(vertexCount_) +
                       " vertices; keeping the previous colours",
                   kSetColorsLabel);
        return false;
    }
    pendingColors_ = std::move(colors);
    hasCustomColors_ = !pendingColors_.empty();
    colorsDirty_ = true;
    return true;
}

void ElementRenderer::ReleaseGpuResources()
{
    if (!gpu_)
        return;
    gpu_->array.Release();
    gpu_->checker.reset();
    gpu_->vertexCount = 0;
    gpu_->triangleIndexCount = 0;
    gpu_->edgeIndexCount = 0;
    gpu_->hasColors = false;
}

void ElementRenderer::Render(const RenderContext& context, const Style& baseStyle)
{
    const auto* geometryStyle = dynamic_cast<const GeometryStyle*>(&baseStyle);
    if (!geometryStyle || !geometryStyle->visible || !context.programs)
        return;
    const GeometryStyle& style = *geometryStyle;

    if (!gpu_)
        gpu_ = std::make_unique<Gpu>();
    Gpu& gpu = *gpu_;
    if (surfaceDirty_) {
        gpu.TakeSurface(std::move(pending_));
        pending_ = PreparedSurface();
        surfaceDirty_ = false;
    }
    if (colorsDirty_) {
        if (hasCustomColors_) {
            gpu.array.SetBuffer(kColorSlot, std::move(pendingColors_),
                                {{3, 3, plor::DataType::Float, false, 0, 0}});
            std::vector<tesk::Color3f>().swap(pendingColors_);
        } else {
            gpu.array.ClearBuffer(kColorSlot);
        }
        gpu.hasColors = hasCustomColors_;
        colorsDirty_ = false;
    }
    if (gpu.vertexCount == 0)
        return;

    // Shapes without faces (or without any edge) still show their vertices.
    int mode = style.renderMode;
    const bool hasFaces = gpu.triangleIndexCount > 0;
    const bool hasEdges = gpu.edgeIndexCount > 0;
    if (mode < RenderMode::Points || mode > RenderMode::SolidAndWires)
        mode = RenderMode::Solid;
    if (!hasFaces && mode == RenderMode::Solid)
        mode = RenderMode::Points;
    if (!hasFaces && mode == RenderMode::SolidAndWires)
        mode = RenderMode::PointsAndWires;
    if (!hasEdges && mode == RenderMode::Wires)
        mode = RenderMode::Points;

    Frame frame = MakeFrame(context, style);
    const bool solid = mode == RenderMode::Solid || mode == RenderMode::SolidAndWires;

    plor::Texture* colorTexture = nullptr;
    if (gpu.hasUvs && (style.colorMode == ColorMode::Checker || style.colorMode == ColorMode::Texture)) {
        if (style.colorMode == ColorMode::Texture) {
            if (style.albedoTexture && style.albedoTexture->HasImage())
                colorTexture = style.albedoTexture.get();
            else if (plor::Texture* own = GetDefaultAlbedoTexture(); own && own->HasImage())
                colorTexture = own;
        }
        if (!colorTexture)
            colorTexture = gpu.Checker(context);
    }
    frame.useTexture = colorTexture && colorTexture->Bind(0);
    frame.useMatcap = solid && style.useMatcap && style.matcap && style.matcap->Bind(1);
    frame.useNormalMap = solid && style.normalsSource == NormalsSource::NormalMap && gpu.hasUvs &&
                         style.normalMap && style.normalMap->Bind(2);
    glActiveTexture(GL_TEXTURE0);

    if (solid && hasFaces) {
        if (plor::Program& p = context.programs->GetOrAdd(kSurfaceProgram, kSurfaceFiles); p.Use()) {
            gpu.surface.Refresh(p);
            SetSurfaceUniforms(gpu.surface, frame, context, style, gpu.hasColors);
            if (style.cullBackFacing) {
                glEnable(GL_CULL_FACE);
                glCullFace(GL_BACK);
            }
            // With wires on top, the faces step back a little so the edges win the depth test.
            if (mode == RenderMode::SolidAndWires) {
                glEnable(GL_POLYGON_OFFSET_FILL);
                glPolygonOffset(1.0f, 1.0f);
            }
            gpu.array.DrawElements(plor::PrimitiveType::Triangles, 0, gpu.triangleIndexCount);
            glDisable(GL_POLYGON_OFFSET_FILL);
            glDisable(GL_CULL_FACE);
        }
    }

    const bool wires =
        mode == RenderMode::Wires || mode == RenderMode::PointsAndWires || mode == RenderMode::SolidAndWires;
    if (wires && hasEdges) {
        if (plor::Program& p = context.programs->GetOrAdd(kWiresProgram, kWiresFiles); p.Use()) {
            gpu.wires.Refresh(p);
            SetSurfaceUniforms(gpu.wires, frame, context, style, gpu.hasColors);
            // Over faces the wires take the style's wire colour; alone they take the surface's
            // colour, or a dark default wire colour would vanish against a dark background.
            if (mode == RenderMode::SolidAndWires) {
                glUniform1i(gpu.wires.useFixedColor, 1);
                glUniform3f(gpu.wires.fixedColor, style.wireColor.r, style.wireColor.g, style.wireColor.b);
            }
            glUniform2f(gpu.wires.viewportSize, frame.viewportSize.x, frame.viewportSize.y);
            glUniform1f(gpu.wires.lineWidth, std::max(1.0f, style.wireThickness * frame.pixelScale));
            gpu.array.DrawElements(plor::PrimitiveType::Lines, gpu.triangleIndexCount, gpu.edgeIndexCount);
        }
    }

    if (mode == RenderMode::Points || mode == RenderMode::PointsAndWires) {
        if (plor::Program& p = context.programs->GetOrAdd(kPointsProgram, kPointsFiles); p.Use()) {
            gpu.points.Refresh(p);
            SetSurfaceUniforms(gpu.points, frame, context, style, gpu.hasColors);
            glUniform1f(gpu.points.pointSize, std::max(1.0f, style.pointSize * frame.pixelScale));
            glEnable(GL_PROGRAM_POINT_SIZE);
            gpu.array.Draw(plor::PrimitiveType::Points, 0, gpu.vertexCount);
            glDisable(GL_PROGRAM_POINT_SIZE);
        }
    }

    if (style.showNormals) {
        // Flat shading shows one normal per face, from its centre; otherwise one per vertex.
        const bool perFace = style.normalsSource == NormalsSource::Flat && hasFaces;
        plor::Program& p = perFace ? context.programs->GetOrAdd(kFaceNormalsProgram, kFaceNormalsFiles)
                                   : context.programs->GetOrAdd(kNormalsProgram, kNormalsFiles);
        if (p.Use()) {
            NormalUniforms& u = perFace ? gpu.faceNormals : gpu.normals;
            u.Refresh(p);
            u.transform.Upload(context, frame.model, frame.normalMatrix);
            glUniform1f(u.length, style.normalLength);
            glUniform3f(u.color, style.normalColor.r, style.normalColor.g, style.normalColor.b);
            if (perFace)
                gpu.array.DrawElements(plor::PrimitiveType::Triangles, 0, gpu.triangleIndexCount);
            else
                gpu.array.Draw(plor::PrimitiveType::Points, 0, gpu.vertexCount);
        }
    }
}

} // namespace vexa::draw
