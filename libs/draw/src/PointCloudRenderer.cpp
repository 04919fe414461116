#include <vexa/draw/PointCloudRenderer.h>

#include <vexa/draw/PointPicking.h>
#include <vexa/draw/RenderContext.h>
#include <vexa/draw/RenderSystem.h>
#include <vexa/draw/ShuffledOrder.h>

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
#include <type_traits>

using namespace gl;

namespace vexa::draw {

namespace {

constexpr const char* kBuildLabel = "vexa::draw::PointCloudRenderer::PointCloudRenderer";
constexpr const char* kSetColorsLabel = "vexa::draw::PointCloudRenderer::SetColors";

constexpr std::size_t kPositionSlot = 0;
constexpr std::size_t kNormalSlot = 1;
constexpr std::size_t kColorSlot = 2;

constexpr std::string_view kPointsProgram = "pointcloud.points";
// Without normals in use a point is only its place and colour: a lean program, with the
// per-point colour as a variant of its own rather than a branch every vertex takes.
constexpr std::string_view kFlatProgram = "pointcloud.flat";
constexpr std::string_view kFlatColoredProgram = "pointcloud.flat.colored";
constexpr plor::ProgramFiles kFlatFiles{"pointcloud/flat.vert", "pointcloud/flat.frag"};
constexpr plor::ProgramFiles kFlatColoredFiles{
    "pointcloud/flat.vert", "pointcloud/flat.frag", {}, "PER_POINT_COLOR"};
const plor::Attribute kColorAttribute{2, 3, plor::DataType::UnsignedByte, true};
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

/// The fast scan for the usual cloud without a single bad coordinate, copying the positions
/// to `copy` on the way (one pass over the host's array instead of two). Four points are
/// twelve floats, so twelve running minima and maxima (lane j always holds coordinate j % 3)
/// turn the loop into plain vector min/max the compiler emits without shuffles. `v * 0` is 0
/// for finite v and NaN otherwise, so one sum per lane tells whether some value was not
/// finite; then the exact scan runs instead, which only such clouds pay for.
PositionScan ScanAndCopyPositions(std::span<const glm::vec3> positions, float* copy)
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
    for (std::size_t b = 0; b < blocks; ++b, p += kLanes, copy += kLanes)
        for (int j = 0; j < kLanes; ++j) {
            const float v = p[j];
            copy[j] = v;
            lo[j] = v < lo[j] ? v : lo[j];
            hi[j] = v > hi[j] ? v : hi[j];
            check[j] += v * 0.0f;
        }
    for (std::size_t i = blocks * kPointsPerBlock; i < positions.size(); ++i, p += 3, copy += 3)
        for (int j = 0; j < 3; ++j) {
            const float v = p[j];
            copy[j] = v;
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
std::unique_ptr<plor::UploadBytes> CopyBytes(std::span<const std::byte> bytes)
{
    return plor::UploadBytes::CopyOf(bytes);
}

struct PointUniforms {
    unsigned int program = 0;
    GLint pointSize = -1, cullBackFacing = -1, hasColors = -1, colorMode = -1, shadeColors = -1,
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
        cullBackFacing = p.GetUniformLocation("uCullBackFacing");
        hasColors = p.GetUniformLocation("uHasColors");
        colorMode = p.GetUniformLocation("uColorMode");
        shadeColors = p.GetUniformLocation("uShadeColors");
        orientedDiscs = p.GetUniformLocation("uOrientedDiscs");
        lighting.Refresh(p);
    }
};

struct FlatUniforms {
    unsigned int program = 0;
    GLint clipFromModel = -1, pointSize = -1, baseColor = -1;

    void Refresh(plor::Program& p)
    {
        if (p.GetId() == program)
            return;
        program = p.GetId();
        clipFromModel = p.GetUniformLocation("uClipFromModel");
        pointSize = p.GetUniformLocation("uPointSize");
        baseColor = p.GetUniformLocation("uBaseColor");
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

/// Colours become bytes on their way to the buffer: 3 bytes a point instead of 12, and
/// more precision than a screen shows anyway.
std::unique_ptr<plor::UploadBytes> ByteColors(std::span<const tesk::Color3f> colors)
{
    auto bytes = std::make_unique<plor::UploadBytes>(colors.size() * sizeof(tesk::Color3b));
    auto* target = reinterpret_cast<tesk::Color3b*>(bytes->MutableBytes().data());
    std::transform(colors.begin(), colors.end(), target, [](const tesk::Color3f& c) { return c.ToByte(); });
    return bytes;
}

} // namespace

struct PointCloudRenderer::Gpu {
    plor::ArrayObject array;
    PointUniforms points;
    FlatUniforms flat;
    FlatUniforms flatColored;
    NormalUniforms normals;
    /// One run per block for subset frames, sized once.
    std::vector<int> runCounts;
    std::vector<std::size_t> runStarts;
    std::vector<int> runBases;
    bool hasSubsetOrder = false;
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

    auto copy = std::make_unique<plor::UploadBytes>(positions.size_bytes());
    const PositionScan scan =
        ScanAndCopyPositions(positions, reinterpret_cast<float*>(copy->MutableBytes().data()));
    bounds_ = scan.bounds;
    nonFiniteCount_ = scan.nonFinite;
    if (nonFiniteCount_ > 0)
        rlog::Warn(std::to_string(nonFiniteCount_) + " of " + std::to_string(pointCount_) +
                       " points have a non-finite coordinate and are not drawn",
                   kBuildLabel);

    plor::ArrayObject& array = gpu_->array;
    array.SetBuffer(kPositionSlot, std::unique_ptr<plor::OwnedBytes>(std::move(copy)),
                    {plor::Attribute{0, 3, plor::DataType::Float}});
    hasNormals_ = cloud.HasNormals();
    if (hasNormals_)
        array.SetBuffer(kNormalSlot, CopyBytes(std::as_bytes(cloud.GetNormals())),
                        {plor::Attribute{1, 3, plor::DataType::Float}});
    array.SetVertexCount(pointCount_);
    const std::size_t blocks = ShuffledOrder::BlockCount(pointCount_);
    gpu_->runCounts.resize(blocks);
    gpu_->runStarts.resize(blocks);
    gpu_->runBases.resize(blocks);
}

PointCloudRenderer::~PointCloudRenderer()
{
    ReleaseGpuResources();
}

bool PointCloudRenderer::SetColors(std::span<const tesk::Color3f> colors)
{
    if (!AcceptsColors(colors.size(), pointCount_))
        return false;
    StoreColors(ByteColors(colors));
    return true;
}

bool PointCloudRenderer::SetColors(std::span<const tesk::Color3b> colors)
{
    if (!AcceptsColors(colors.size(), pointCount_))
        return false;
    StoreColors(CopyBytes(std::as_bytes(colors)));
    return true;
}

bool PointCloudRenderer::SetColors(std::vector<tesk::Color3b>&& colors)
{
    if (!AcceptsColors(colors.size(), pointCount_))
        return false;
    StoreColors(std::make_unique<plor::OwnedVector<tesk::Color3b>>(std::move(colors)));
    return true;
}

void PointCloudRenderer::StoreColors(std::unique_ptr<plor::OwnedBytes> colors)
{
    if (hasColors_)
        gpu_->array.UpdateBuffer(kColorSlot, std::move(colors));
    else
        gpu_->array.SetBuffer(kColorSlot, std::move(colors), {kColorAttribute});
    hasColors_ = true;
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

std::size_t PointCloudRenderer::PlanDraw(std::size_t budget)
{
    if (budget == 0 || budget >= pointCount_)
        return pointCount_;
    Gpu& gpu = *gpu_;
    // The subset order is made when the camera first moves over a big cloud; clouds that are
    // never moved over, or are small enough to draw whole, never pay for it.
    if (!gpu.hasSubsetOrder) {
        gpu.array.SetIndices(ShuffledOrder::Indices(pointCount_));
        gpu.hasSubsetOrder = true;
    }
    return ShuffledOrder::SubsetRuns(pointCount_, budget, gpu.runCounts, gpu.runStarts, gpu.runBases);
}

void PointCloudRenderer::DrawPoints(std::size_t drawn)
{
    if (drawn == pointCount_)
        gpu_->array.Draw(plor::PrimitiveType::Points);
    else
        gpu_->array.DrawElementRuns(plor::PrimitiveType::Points, gpu_->runCounts, gpu_->runStarts,
                                    gpu_->runBases);
}

void PointCloudRenderer::Render(const RenderContext& context, const Style& baseStyle)
{
    drawnCount_ = 0;
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
    const std::size_t drawn = PlanDraw(context.pointBudget);

    glEnable(GL_PROGRAM_POINT_SIZE);
    if (useNormals) {
        if (plor::Program& program = context.programs->GetOrAdd(kPointsProgram, kPointsFiles);
            program.Use()) {
            PointUniforms& u = gpu.points;
            u.Refresh(program);
            u.transform.Upload(context, model, normalMatrix);
            glUniform1f(u.pointSize, size * pixelScale);
            glUniform1i(u.cullBackFacing, style.cullBackFacing ? 1 : 0);
            glUniform1i(u.hasColors, hasColors_ ? 1 : 0);
            glUniform1i(u.colorMode, style.colorMode);
            glUniform1i(u.shadeColors, style.shadeColors ? 1 : 0);
            glUniform1i(u.orientedDiscs, style.orientedDiscs ? 1 : 0);
            u.lighting.Upload(context, style.material);
            DrawPoints(drawn);
            drawnCount_ = drawn;
        }
    } else {
        const bool perPoint = style.colorMode == ColorMode::PerPoint && hasColors_;
        plor::Program& program = perPoint ? context.programs->GetOrAdd(kFlatColoredProgram, kFlatColoredFiles)
                                          : context.programs->GetOrAdd(kFlatProgram, kFlatFiles);
        if (program.Use()) {
            FlatUniforms& u = perPoint ? gpu.flatColored : gpu.flat;
            u.Refresh(program);
            const glm::mat4 clipFromModel = context.viewProjection * model;
            glUniformMatrix4fv(u.clipFromModel, 1, GL_FALSE, glm::value_ptr(clipFromModel));
            glUniform1f(u.pointSize, size * pixelScale);
            const tesk::Color3f& color = style.material.color;
            glUniform3f(u.baseColor, color.r, color.g, color.b);
            DrawPoints(drawn);
            drawnCount_ = drawn;
        }
    }
    glDisable(GL_PROGRAM_POINT_SIZE);
    if (context.system)
        context.system->CountPoints(drawnCount_, pointCount_ - std::min(drawnCount_, pointCount_));

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
            DrawPoints(drawn);
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
    gpu_->hasSubsetOrder = false;
    gpu_->points = PointUniforms();
    gpu_->flat = FlatUniforms();
    gpu_->flatColored = FlatUniforms();
    gpu_->normals = NormalUniforms();
    hasColors_ = false;
}

} // namespace vexa::draw
