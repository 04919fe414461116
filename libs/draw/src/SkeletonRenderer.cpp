#include <vexa/draw/SkeletonRenderer.h>

#include <vexa/draw/RenderContext.h>

#include "LightingUniforms.h"
#include "TransformUniforms.h"

#include <plor/ArrayObject.h>
#include <plor/Program.h>

#include <runa/rlog.h>

#include <glbinding/gl/gl.h>

#include <glm/glm.hpp>
#include <glm/gtc/type_ptr.hpp>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <string_view>

using namespace gl;

namespace vexa::draw {

namespace {

constexpr std::size_t kJointFloats = 13;
constexpr int kJointStride = static_cast<int>(kJointFloats * sizeof(float));
/// Joint sphere radius per unit of the length of the bone ending in the joint.
constexpr float kJointRadiusPerLength = 0.07f;
/// Radius for a skeleton without any bone length to go by (a single joint).
constexpr float kFallbackRadius = 0.05f;
constexpr float kMinJointPixels = 6.0f;
constexpr float kMaxJointPixels = 64.0f;

constexpr std::string_view kOctahedronProgram = "skeleton.octahedron";
constexpr std::string_view kWiredProgram = "skeleton.wired";
constexpr std::string_view kStickmanProgram = "skeleton.stickman";
constexpr std::string_view kJointsProgram = "skeleton.joints";
constexpr std::string_view kBasisProgram = "skeleton.basis";
constexpr plor::ProgramFiles kOctahedronFiles{"skeleton/bones.vert", "skeleton/bones.frag",
                                              "skeleton/bones.geom", "OCTAHEDRON"};
constexpr plor::ProgramFiles kWiredFiles{"skeleton/bones.vert", "skeleton/bones.frag", "skeleton/bones.geom",
                                         "WIRED"};
constexpr plor::ProgramFiles kStickmanFiles{"skeleton/bones.vert", "skeleton/bones.frag",
                                            "skeleton/bones.geom", "STICKMAN"};
constexpr plor::ProgramFiles kJointsFiles{"skeleton/joints.vert", "skeleton/joints.frag"};
constexpr plor::ProgramFiles kBasisFiles{"skeleton/bones.vert", "skeleton/bones.frag", "skeleton/basis.geom"};

/// Uniform locations of one of the skeleton programs; names a program lacks stay -1, which
/// GL ignores.
struct Uniforms {
    unsigned int program = 0;
    GLint color = -1;
    GLint viewportSize = -1, viewportHeight = -1, lineWidth = -1;
    GLint modelScale = -1, minPointSize = -1, maxPointSize = -1;
    TransformUniforms transform;
    LightingUniforms lighting;

    void Refresh(plor::Program& p)
    {
        if (p.GetId() == program)
            return;
        program = p.GetId();
        transform.Refresh(p);
        color = p.GetUniformLocation("uColor");
        lighting.Refresh(p);
        viewportSize = p.GetUniformLocation("uViewportSize");
        viewportHeight = p.GetUniformLocation("uViewportHeight");
        lineWidth = p.GetUniformLocation("uLineWidth");
        modelScale = p.GetUniformLocation("uModelScale");
        minPointSize = p.GetUniformLocation("uMinPointSize");
        maxPointSize = p.GetUniformLocation("uMaxPointSize");
    }
};

/// Everything of one Render that does not depend on the program.
struct Frame {
    glm::mat4 model{1.0f};
    glm::vec2 viewportSize{1.0f};
    float pixelScale = 1.0f;
    float modelScale = 1.0f;
};

Frame MakeFrame(const RenderContext& context, const SkeletonStyle& style)
{
    Frame f;
    f.model = style.transform.GetMatrix();
    // Joint spheres grow with the model's largest scale, so they never vanish inside bones.
    const glm::mat3 linear(f.model);
    f.modelScale = std::max({glm::length(linear[0]), glm::length(linear[1]), glm::length(linear[2])});
    if (!std::isfinite(f.modelScale))
        f.modelScale = 1.0f;

    glm::ivec2 size(context.glViewport.z, context.glViewport.w);
    if (size.x <= 0 || size.y <= 0)
        size = context.framebufferSize;
    f.viewportSize = glm::vec2(std::max(size.x, 1), std::max(size.y, 1));
    f.pixelScale = context.pixelScale > 0.0f ? context.pixelScale : 1.0f;

    return f;
}

void SetCommonUniforms(const Uniforms& u, const Frame& f, const RenderContext& context,
                       const tesk::Color3f& color, bool lit, float lineWidth)
{
    u.transform.Upload(context, f.model);
    glUniform3f(u.color, color.r, color.g, color.b);
    u.lighting.UploadLights(context, lit);
    glUniform2f(u.viewportSize, f.viewportSize.x, f.viewportSize.y);
    glUniform1f(u.viewportHeight, f.viewportSize.y);
    const float width = lineWidth * f.pixelScale;
    glUniform1f(u.lineWidth, std::isfinite(width) ? std::max(1.0f, width) : 1.0f);
    glUniform1f(u.modelScale, f.modelScale);
    glUniform1f(u.minPointSize, kMinJointPixels * f.pixelScale);
    glUniform1f(u.maxPointSize, kMaxJointPixels * f.pixelScale);
}

bool IsFinite(const glm::vec3& v)
{
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

} // namespace

struct SkeletonRenderer::Gpu {
    plor::ArrayObject array;
    /// Whether the array holds the joint buffer and the bone indices (else they are set
    /// afresh, after a release for instance).
    bool hasBuffers = false;
    Uniforms octahedron;
    Uniforms wired;
    Uniforms stickman;
    Uniforms joints;
    Uniforms basis;
};

SkeletonRenderer::SkeletonRenderer(const tesk::Skeleton& skeleton) : skeleton_(skeleton)
{
    Initialize();
}

SkeletonRenderer::SkeletonRenderer(tesk::Skeleton&& skeleton) : skeleton_(std::move(skeleton))
{
    Initialize();
}

SkeletonRenderer::~SkeletonRenderer() = default;

void SkeletonRenderer::Initialize()
{
    const std::span<const tesk::Joint> joints = skeleton_.GetJoints();
    if (joints.empty())
        rlog::Warn("The skeleton has no joints; nothing will be drawn",
                   "vexa::draw::SkeletonRenderer::SkeletonRenderer");
    boneIndices_.reserve(joints.size() * 2);
    for (std::size_t i = 0; i < joints.size(); ++i)
        if (joints[i].parent >= 0)
            boneIndices_.insert(boneIndices_.end(), {static_cast<std::uint32_t>(joints[i].parent),
                                                     static_cast<std::uint32_t>(i)});
    jointData_.assign(joints.size() * kJointFloats, 0.0f);
    global_.reserve(joints.size());
    if (!skeleton_.GetRestPose().ComputeGlobal(skeleton_, global_))
        global_.assign(joints.size(), glm::mat4(1.0f));
    UpdateJointData();
}

bool SkeletonRenderer::SetPose(const tesk::SkeletonPose& pose)
{
    if (pose.JointCount() != skeleton_.JointCount()) {
        rlog::Fail("The pose has " + std::to_string(pose.JointCount()) + " joints but the skeleton has " +
                       std::to_string(skeleton_.JointCount()) + "; keeping the previous pose",
                   "vexa::draw::SkeletonRenderer::SetPose");
        return false;
    }
    if (!pose.ComputeGlobal(skeleton_, global_))
        return false;
    UpdateJointData();
    return true;
}

void SkeletonRenderer::UpdateJointData()
{
    const std::span<const tesk::Joint> joints = skeleton_.GetJoints();
    const std::size_t count = std::min(joints.size(), global_.size());

    // Sphere sizes follow the bones, so a hand's joints stay smaller than a hip's; roots,
    // which end no bone, take the mean bone length.
    double lengthSum = 0.0;
    std::size_t lengthCount = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const int parent = joints[i].parent;
        if (parent < 0)
            continue;
        const float length = glm::distance(glm::vec3(global_[i][3]), glm::vec3(global_[parent][3]));
        if (std::isfinite(length) && length > 0.0f) {
            lengthSum += length;
            ++lengthCount;
        }
    }
    const float meanLength =
        lengthCount > 0 ? static_cast<float>(lengthSum / static_cast<double>(lengthCount)) : 0.0f;
    const float fallbackRadius = meanLength > 0.0f ? kJointRadiusPerLength * meanLength : kFallbackRadius;

    bounds_.Reset();
    for (std::size_t i = 0; i < count; ++i) {
        const glm::mat4& m = global_[i];
        const glm::vec3 position(m[3]);
        float radius = fallbackRadius;
        if (const int parent = joints[i].parent; parent >= 0) {
            const float length = glm::distance(position, glm::vec3(global_[parent][3]));
            if (std::isfinite(length) && length > 0.0f)
                radius = kJointRadiusPerLength * length;
        }
        float* out = &jointData_[i * kJointFloats];
        std::memcpy(out, &position, sizeof(glm::vec3));
        out[3] = radius;
        for (int axis = 0; axis < 3; ++axis) {
            const glm::vec3 direction(m[axis]);
            std::memcpy(out + 4 + 3 * axis, &direction, sizeof(glm::vec3));
        }
        if (IsFinite(position))
            bounds_.Extend(position);
    }
    dataDirty_ = true;
}

bool SkeletonRenderer::IsCompatibileWithStyle(const Style& style) const
{
    return dynamic_cast<const SkeletonStyle*>(&style) != nullptr;
}

void SkeletonRenderer::ReleaseGpuResources()
{
    if (!gpu_)
        return;
    gpu_->array.Release();
    gpu_->hasBuffers = false;
    // The joint data is still on the CPU: the next Render uploads it again.
    dataDirty_ = true;
}

void SkeletonRenderer::Render(const RenderContext& context, const Style& baseStyle)
{
    const auto* skeletonStyle = dynamic_cast<const SkeletonStyle*>(&baseStyle);
    if (!skeletonStyle || !skeletonStyle->visible || !context.programs || jointData_.empty())
        return;
    const SkeletonStyle& style = *skeletonStyle;

    if (!gpu_)
        gpu_ = std::make_unique<Gpu>();
    Gpu& gpu = *gpu_;
    if (dataDirty_) {
        const std::span<const std::byte> bytes = plor::AsBytes(jointData_);
        if (gpu.hasBuffers) {
            gpu.array.UpdateBuffer(0, bytes);
        } else {
            gpu.array.SetBuffer(0, bytes,
                                {{0, 3, plor::DataType::Float, false, kJointStride, 0},
                                 {1, 1, plor::DataType::Float, false, kJointStride, 3 * sizeof(float)},
                                 {2, 3, plor::DataType::Float, false, kJointStride, 4 * sizeof(float)},
                                 {3, 3, plor::DataType::Float, false, kJointStride, 7 * sizeof(float)},
                                 {4, 3, plor::DataType::Float, false, kJointStride, 10 * sizeof(float)}},
                                plor::BufferUsage::Dynamic);
            gpu.array.SetIndices(boneIndices_);
            gpu.array.SetVertexCount(skeleton_.JointCount());
            gpu.hasBuffers = true;
        }
        dataDirty_ = false;
    }

    const Frame frame = MakeFrame(context, style);

    if (!boneIndices_.empty()) {
        std::string_view name = kOctahedronProgram;
        const plor::ProgramFiles* files = &kOctahedronFiles;
        Uniforms* uniforms = &gpu.octahedron;
        if (style.renderMode == SkeletonRenderMode::WiredOctahedron) {
            name = kWiredProgram;
            files = &kWiredFiles;
            uniforms = &gpu.wired;
        } else if (style.renderMode == SkeletonRenderMode::Stickman) {
            name = kStickmanProgram;
            files = &kStickmanFiles;
            uniforms = &gpu.stickman;
        }
        if (plor::Program& p = context.programs->GetOrAdd(name, *files); p.Use()) {
            uniforms->Refresh(p);
            // Only the solid has normals to light; lines keep their plain colour.
            const bool lit = style.enableLighting && uniforms == &gpu.octahedron;
            SetCommonUniforms(*uniforms, frame, context, style.boneColor, lit, style.lineWidth);
            gpu.array.DrawElements(plor::PrimitiveType::Lines);
        }
    }

    if (style.showJoints) {
        if (plor::Program& p = context.programs->GetOrAdd(kJointsProgram, kJointsFiles); p.Use()) {
            gpu.joints.Refresh(p);
            SetCommonUniforms(gpu.joints, frame, context, style.jointColor, style.enableLighting,
                              style.lineWidth);
            glEnable(GL_PROGRAM_POINT_SIZE);
            gpu.array.Draw(plor::PrimitiveType::Points);
            glDisable(GL_PROGRAM_POINT_SIZE);
        }
    }

    if (style.showBasis) {
        if (plor::Program& p = context.programs->GetOrAdd(kBasisProgram, kBasisFiles); p.Use()) {
            gpu.basis.Refresh(p);
            SetCommonUniforms(gpu.basis, frame, context, style.boneColor, false, style.lineWidth);
            gpu.array.Draw(plor::PrimitiveType::Points);
        }
    }
}

} // namespace vexa::draw
