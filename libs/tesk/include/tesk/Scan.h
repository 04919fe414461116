#pragma once
// A point cloud captured by a camera, together with that camera: where it stood, how it was
// oriented and its intrinsic parameters, so a viewer can show the camera and look through it.

#include "tesk/PointCloud.h"

#include <runa/BasisDefinition.h>
#include <runa/IntrinsicParams.h>

#include <glm/mat3x3.hpp>
#include <glm/vec2.hpp>
#include <glm/vec3.hpp>

#include <cstdint>
#include <string>
#include <utility>

namespace tesk {

struct ScanCameraParams {
    runa::IntrinsicParams intrinsics;
    /// Free text identifying the device (model, serial number).
    std::string label;
    /// Length units per raw depth count (0.001 for a sensor reporting millimetres in metres).
    float depthScale = 1.0f;
    /// Working range of the sensor along its viewing axis, in the cloud's units; 0 = unknown.
    float minRange = 0.0f;
    float maxRange = 0.0f;

    bool operator==(const ScanCameraParams&) const = default;
};

class Scan {
public:
    Scan() = default;
    explicit Scan(PointCloud points);

    const PointCloud& GetPointCloud() const { return points_; }
    PointCloud& GetPointCloud() { return points_; }
    void SetPointCloud(PointCloud points) { points_ = std::move(points); }

    /// Image size of the capturing camera in pixels (width, height); (0, 0) when unknown.
    glm::uvec2 GetResolution() const { return resolution_; }
    void SetResolution(std::uint32_t width, std::uint32_t height) { resolution_ = {width, height}; }
    void SetResolution(const glm::uvec2& resolution) { resolution_ = resolution; }

    const ScanCameraParams& GetCameraParams() const { return cameraParams_; }
    /// False (logged, previous values kept) for a non-positive or non-finite depth scale or a
    /// maximum range below a non-zero minimum.
    bool SetCameraParams(const ScanCameraParams& params);

    const glm::vec3& GetCameraPosition() const { return cameraPosition_; }
    /// False (logged, unchanged) for a non-finite position.
    bool SetCameraPosition(const glm::vec3& position);

    const glm::vec3& GetCameraUp() const { return cameraUp_; }
    /// Stored normalised. False (logged, unchanged) for a zero or non-finite vector.
    bool SetCameraUp(const glm::vec3& up);

    /// Columns are the camera's axes in scan coordinates; which column means "forward" or
    /// "up" is told by the basis definition.
    const glm::mat3& GetCameraBasis() const { return cameraBasis_; }
    /// The basis must be a rotation: orthonormal columns and determinant +1 (within 1e-3),
    /// because viewers turn it into a quaternion. False (logged, unchanged) otherwise.
    bool SetCameraBasis(const glm::mat3& basis);

    const runa::BasisDefinition& GetBasisDefinition() const { return basisDefinition_; }
    void SetBasisDefinition(const runa::BasisDefinition& definition) { basisDefinition_ = definition; }

    /// The basis definition's forward axis expressed in scan coordinates: the direction the
    /// camera looks in.
    glm::vec3 GetViewDirection() const;

private:
    PointCloud points_;
    glm::uvec2 resolution_{0u, 0u};
    ScanCameraParams cameraParams_;
    glm::vec3 cameraPosition_{0.0f, 0.0f, 0.0f};
    glm::vec3 cameraUp_{0.0f, 1.0f, 0.0f};
    glm::mat3 cameraBasis_{1.0f};
    runa::BasisDefinition basisDefinition_;
};

} // namespace tesk
