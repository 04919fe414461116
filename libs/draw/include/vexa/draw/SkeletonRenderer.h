#pragma once
#include <vexa/draw/Renderer.h>
#include <vexa/draw/SkeletonStyle.h>

#include <tesk/Skeleton.h>
#include <tesk/SkeletonPose.h>

#include <glm/mat4x4.hpp>

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace vexa::draw {

/// Draws a skeleton in one pose: each bone (joint to parent) as an octahedron, its wire
/// edges or a stick line; joints as small spheres; each joint's axes as red, green and blue
/// lines.
///
/// The GPU holds one vertex per joint (position, size and axes of the pose) and a fixed list
/// of bones as index pairs; the shapes are built from them on the GPU. A new pose uploads
/// only that per-joint data, once, at the next Render; an unchanged pose uploads nothing.
class SkeletonRenderer : public Renderer {
public:
    /// Starts in the skeleton's rest pose.
    explicit SkeletonRenderer(const tesk::Skeleton& skeleton);
    explicit SkeletonRenderer(tesk::Skeleton&& skeleton);
    ~SkeletonRenderer() override;

    /// Shows `pose`. False (logged, previous pose kept) when it does not have one transform
    /// per joint. Allocates nothing once the renderer exists.
    bool SetPose(const tesk::SkeletonPose& pose);

    const tesk::Skeleton& GetSkeleton() const { return skeleton_; }
    std::size_t GetJointCount() const { return skeleton_.JointCount(); }
    /// Joints with a parent.
    std::size_t GetBoneCount() const { return boneIndices_.size() / 2; }
    /// World matrix of every joint in the current pose (model space of the renderer).
    std::span<const glm::mat4> GetGlobalMatrices() const { return global_; }

    bool IsCompatibileWithStyle(const Style& style) const override;
    void Render(const RenderContext& context, const Style& style) override;
    /// Box around the joint positions of the current pose (non-finite ones left out); not
    /// valid for an empty skeleton or one that is flat along some axis.
    geom::TAabb<3, float> GetBoundingBox() const override { return bounds_; }
    void ReleaseGpuResources() override;

private:
    void Initialize();
    /// Refreshes the per-joint vertex data and the bounds from global_.
    void UpdateJointData();

    struct Gpu;
    std::unique_ptr<Gpu> gpu_;
    tesk::Skeleton skeleton_;
    std::vector<glm::mat4> global_;
    /// Per joint: position, sphere radius, then the X, Y and Z axes (13 floats). Kept on the
    /// CPU: a pose change rewrites it in place.
    std::vector<float> jointData_;
    /// Parent and child joint of each bone.
    std::vector<std::uint32_t> boneIndices_;
    geom::TAabb<3, float> bounds_;
    bool dataDirty_ = true;
};

} // namespace vexa::draw
