#include <vexa/draw/PointCloudRenderer.h>

#include <vexa/draw/PointPicking.h>
#include <vexa/draw/RenderContext.h>

#include "LightingUniforms.h"
#include "TransformUniforms.h"

#include <plor/ArrayObject.h>
#include <plor/Program.h>
#include <plor/UploadBytes.h>

#include <runa/rlog.h>

#include <glbinding/gl/gl.h>

#include <glm/glm.hpp>
#include <glm/gtc/type_ptr.hpp>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <string_view>

using namespace gl;

namespace vexa::draw {

namespace {

constexpr const char* kBuildLabel = "vexa::draw::PointCloudRenderer::PointCloudRenderer";
constexpr const char* kSetColorsLabel = "vexa::draw::PointCloudRenderer::SetColors";

constexpr std::size_t kPositionSlot = 0;
constexpr std::size_t kNormalSlot = 1;
constexpr std::size_t kColorSlot = 2;

constexpr std::string_view kPointsProgram = "pointcloud.points";
constexpr std::string_view kNormalsProgram = "pointcloud.normals";
constexpr plor::ProgramFiles kPointsFiles{"pointcloud/points.vert", "pointcloud/points.frag"};
constexpr plor::ProgramFiles kNormalsFiles{"pointcloud/normals.vert", "pointcloud/normals.frag",
                                           "pointcloud/normals.geom"};

/// The box of the finite points and how many are not finite.
struct PositionScan {
    geom::TAabb<3, float> bounds;
    std::size_t nonFinite = 0;
};

/// The exact scan: a point with any non-finite coordinate is left out entirely. `v - v == 0`
/// holds exactly for finite v (infinity and NaN give NaN).
PositionScan ScanPositionsPointwise(std::span<const glm::vec3> positions)
{
    constexpr float kHuge = std::numeric_limits<float>::max();
    float minX = kHuge, minY = kHuge, minZ = kHuge;
    float maxX = -kHuge, maxY = -kHuge, maxZ = -kHuge;
    std::size_t finite = 0;
    for (const glm::vec3& p : positions) {
        const bool ok = (p.x - p.x == 0.0f) & (p.y - p.y == 0.0f) & (p.z - p.z == 0.0f);
        finite += ok ? 1 : 0;
        minX = ok && p.x < minX ? p.x : minX;
        minY = ok && p.y < minY ? p.y : minY;
        minZ = ok && p.z < minZ ? p.z : minZ;
        maxX = ok && p.x > maxX ? p.x : maxX;
        maxY = ok && p.y > maxY ? p.y : maxY;
        maxZ = ok && p.z > maxZ ? p.z : maxZ;
    }
    PositionScan scan;
    scan.nonFinite = positions.size() - finite;
    if (finite > 0)
        scan.bounds = geom::TAabb<3, float>(glm::vec3(minX, minY, minZ), glm::vec3(maxX, maxY, maxZ));
    return scan;
}

/// The fast scan for the usual cloud without a single bad coordinate. Four points are twelve
/// floats, so twelve running minima and maxima (lane j always holds coordinate j % 3) turn
/// the loop into plain vector min/max the compiler emits without shuffles. `v * 0` is 0 for
/// finite v and NaN otherwise, so one sum per lane tells whether some value was not finite;
/// then the exact scan runs instead, which only such clouds pay for.
PositionScan ScanPositions(std::span<const glm::vec3> positions)
{
    constexpr int kLanes = 12;
    constexpr std::size_t kPointsPerBlock = kLanes / 3;
    constexpr float kHuge = std::numeric_limits<float>::max();
    float lo[kLanes], hi[kLanes], check[kLanes];
    for (int j = 0; j < kLanes; ++j) {
        lo[j] = kHuge;
        hi[j] = -kHuge;
        check[j] = 0.0f;
    }
    const std::size_t blocks = positions.size() / kPointsPerBlock;
    const float* p = glm::value_ptr(positions[0]);
    for (std::size_t b = 0; b < blocks; ++b, p += kLanes)
        for (int j = 0; j < kLanes; ++j) {
            const float v = p[j];
            lo[j] = v < lo[j] ? v : lo[j];
            hi[j] = v > hi[j] ? v : hi[j];
            check[j] += v * 0.0f;
        }
    for (std::size_t i = blocks * kPointsPerBlock; i < positions.size(); ++i, p += 3)
        for (int j = 0; j < 3; ++j) {
            const float v = p[j];
            lo[j] = v < lo[j] ? v : lo[j];
            hi[j] = v > hi[j] ? v : hi[j];
            check[j] += v * 0.0f;
        }

    bool allFinite = true;
    glm::vec3 minimum(kHuge), maximum(-kHuge);
    for (int j = 0; j < kLanes; ++j) {
        allFinite = allFinite && check[j] == 0.0f;
        minimum[j % 3] = std::min(minimum[j % 3], lo[j]);
        maximum[j % 3] = std::max(maximum[j % 3], hi[j]);
    }
    if (!allFinite)
        return ScanPositionsPointwise(positions);
    PositionScan scan;
    scan.bounds = geom::TAabb<3, float>(minimum, maximum);
    return scan;
}

/// A vertex buffer's bytes in one allocation and one memcpy: no zero-fill first, no per-point
/// loop, and for large clouds memory that does not fault in page by page.
std::unique_ptr<plor::OwnedBytes> CopyBytes(std::span<const std::byte> bytes)
{
    return plor::UploadBytes::CopyOf(bytes);
}

struct PointUniforms {
    unsigned int program = 0;
    GLint pointSize = -1, hasNormals = -1, cullBackFacing = -1, hasColors = -1, colorMode = -1, shadeColors = -1,
          orientedDiscs = -1;
    TransformUniforms transform;
    LightingUniforms lighting;

    void Refresh(plor::Program& p)
    {
        if (p.GetId() == program)
            return;
        program = p.GetId();
        transform.Refresh(p);
        pointSize = p.GetUniformLocation("uPointSize");
        hasNormals = p.GetUniformLocation("uHasNormals");
        cullBackFacing = p.GetUniformLocation("uCullBackFacing");
        hasColors = p.GetUniformLocation("uHasColors");
        colorMode = p.GetUniformLocation("uColorMode");
        shadeColors = p.GetUniformLocation("uShadeColors");
        orientedDiscs = p.GetUniformLocation("uOrientedDiscs");
        lighting.Refresh(p);
    }
};

struct NormalUniforms {
    unsigned int program = 0;
    GLint cullBackFacing = -1, length = -1, color = -1;
    TransformUniforms transform;

    void Refresh(plor::Program& p)
    {
        if (p.GetId() == program)
            return;
        program = p.GetId();
        transform.Refresh(p);
        cullBackFacing = p.GetUniformLocation("uCullBackFacing");
        length = p.GetUniformLocation("uLength");
        color = p.GetUniformLocation("uColor");
    }
};

bool AcceptsColors(std::size_t colorCount, std::size_t pointCount)
{
    if (pointCount == 0) {
        rlog::Warn("The point cloud is empty; there is nothing to colour", kSetColorsLabel);
        return false;
    }
    if (colorCount != pointCount) {
        rlog::Warn("Got " + std::to_string(colorCount) + " colours for " + std::to_string(pointCount) +
                       " points; keeping the previous colours",
                   kSetColorsLabel);
        return false;
    }
    return true;
}

} // namespace

struct PointCloudRenderer::Gpu {
    plor::ArrayObject array;
    PointUniforms points;
    NormalUniforms normals;
};

PointCloudRenderer::PointCloudRenderer() : gpu_(std::make_unique<Gpu>()) {}

PointCloudRenderer::PointCloudRenderer(const tesk::PointCloud& cloud) : gpu_(std::make_unique<Gpu>())
{
    const std::span<const glm::vec3> positions = cloud.GetPositions();
    pointCount_ = positions.size();
    if (pointCount_ == 0) {
        rlog::Warn("The point cloud is empty; nothing will be drawn", kBuildLabel);
        return;
    }

    const PositionScan scan = ScanPositions(positions);
    bounds_ = scan.bounds;
    nonFiniteCount_ = scan.nonFinite;
    if (nonFiniteCount_ > 0)
        rlog::Warn(std::to_string(nonFiniteCount_) + " of " + std::to_string(pointCount_) +
                       " points have a non-finite coordinate and are not drawn",
                   kBuildLabel);

    plor::ArrayObject& array = gpu_->array;
    array.SetBuffer(kPositionSlot, CopyBytes(std::as_bytes(positions)),
                    {plor::Attribute{0, 3, plor::DataType::Float}});
    hasNormals_ = cloud.HasNormals();
    if (hasNormals_)
        array.SetBuffer(kNormalSlot, CopyBytes(std::as_bytes(cloud.GetNormals())),
                        {plor::Attribute{1, 3, plor::DataType::Float}});
    array.SetVertexCount(pointCount_);
}

PointCloudRenderer::~PointCloudRenderer()
{
    ReleaseGpuResources();
}

bool PointCloudRenderer::SetColors(std::span<const tesk::Color3f> colors)
{
    if (!AcceptsColors(colors.size(), pointCount_))
        return false;
    if (hasColors_)
        gpu_->array.UpdateBuffer(kColorSlot, CopyBytes(std::as_bytes(colors)));
    else
        gpu_->array.SetBuffer(kColorSlot, CopyBytes(std::as_bytes(colors)),
                              {plor::Attribute{2, 3, plor::DataType::Float}});
    hasColors_ = true;
    return true;
}

bool PointCloudRenderer::SetColors(std::vector<tesk::Color3f>&& colors)
{
    if (!AcceptsColors(colors.size(), pointCount_))
        return false;
    if (hasColors_)
        gpu_->array.UpdateBuffer(kColorSlot, std::move(colors));
    else
        gpu_->array.SetBuffer(kColorSlot, std::move(colors), {plor::Attribute{2, 3, plor::DataType::Float}});
    hasColors_ = true;
    return true;
}

void PointCloudRenderer::ClearColors()
{
    if (!hasColors_)
        return;
    gpu_->array.ClearBuffer(kColorSlot);
    hasColors_ = false;
}

bool PointCloudRenderer::HasPendingData() const
{
    return gpu_->array.HasPendingData();
}

std::size_t PointCloudRenderer::GetCpuDataBytes() const
{
    return gpu_->array.PendingBytes();
}

std::optional<std::size_t> PointCloudRenderer::Pick(const glm::mat4& clipFromPoints,
                                                    const glm::ivec4& viewport, glm::vec2 cursor,
                                                    float radius, glm::vec3* position) const
{
    if (pointCount_ == 0 || released_)
        return std::nullopt;
    const plor::BufferReadView view = gpu_->array.ReadBuffer(kPositionSlot);
    const std::span<const glm::vec3> positions = view.As<glm::vec3>();
    const std::optional<std::size_t> index = PickPoint(positions, clipFromPoints, viewport, cursor, radius);
    if (index && position)
        *position = positions[*index];
    return index;
}

bool PointCloudRenderer::IsCompatibileWithStyle(const Style& style) const
{
    return dynamic_cast<const PointCloudStyle*>(&style) != nullptr;
}

void PointCloudRenderer::Render(const RenderContext& context, const Style& baseStyle)
{
    const auto* pointStyle = dynamic_cast<const PointCloudStyle*>(&baseStyle);
    if (!pointStyle || !pointStyle->visible || pointCount_ == 0 || released_ || !context.programs)
        return;
    const PointCloudStyle& style = *pointStyle;
    Gpu& gpu = *gpu_;

    const glm::mat4 model = style.transform.GetMatrix();
    // The inverse-transpose keeps normals perpendicular under non-uniform scaling.
    const glm::mat3 normalMatrix = glm::transpose(glm::mat3(style.transform.GetInverseMatrix()));
    const bool useNormals = hasNormals_ && style.useNormals;
    const float pixelScale =
        context.pixelScale > 0.0f && std::isfinite(context.pixelScale) ? context.pixelScale : 1.0f;
    const float size =
        std::isfinite(style.pointSize)
            ? std::clamp(style.pointSize, PointCloudStyle::kMinPointSize, PointCloudStyle::kMaxPointSize)
            : PointCloudStyle::kMinPointSize;

    if (plor::Program& program = context.programs->GetOrAdd(kPointsProgram, kPointsFiles); program.Use()) {
        PointUniforms& u = gpu.points;
        u.Refresh(program);
        u.transform.Upload(context, model, normalMatrix);
        glUniform1f(u.pointSize, size * pixelScale);
        glUniform1i(u.hasNormals, useNormals ? 1 : 0);
        glUniform1i(u.cullBackFacing, style.cullBackFacing ? 1 : 0);
        glUniform1i(u.hasColors, hasColors_ ? 1 : 0);
        glUniform1i(u.colorMode, style.colorMode);
        glUniform1i(u.shadeColors, style.shadeColors ? 1 : 0);
        glUniform1i(u.orientedDiscs, style.orientedDiscs ? 1 : 0);
        u.lighting.Upload(context, style.material);

        glEnable(GL_PROGRAM_POINT_SIZE);
        gpu.array.Draw(plor::PrimitiveType::Points);
        glDisable(GL_PROGRAM_POINT_SIZE);
    }

    if (style.showNormals && useNormals) {
        plor::Program& program = context.programs->GetOrAdd(kNormalsProgram, kNormalsFiles);
        if (program.Use()) {
            NormalUniforms& u = gpu.normals;
            u.Refresh(program);
            const float length = std::isfinite(style.normalLength) ? style.normalLength : 0.0f;
            u.transform.Upload(context, model, normalMatrix);
            glUniform1i(u.cullBackFacing, style.cullBackFacing ? 1 : 0);
            glUniform1f(u.length, length);
            glUniform3f(u.color, style.color.r, style.color.g, style.color.b);
            gpu.array.Draw(plor::PrimitiveType::Points);
        }
    }
}

void PointCloudRenderer::ReleaseGpuResources()
{
    if (!gpu_)
        return;
    // Whatever was uploaded is gone with the buffers; data still pending goes too, so a
    // released renderer never draws a partial cloud.
    if (pointCount_ > 0)
        released_ = true;
    gpu_->array.Release();
    gpu_->points = PointUniforms();
    gpu_->normals = NormalUniforms();
    hasColors_ = false;
}

} // namespace vexa::draw
