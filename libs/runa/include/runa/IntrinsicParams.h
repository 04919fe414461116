#pragma once
// Pinhole camera intrinsics with Brown-Conrady distortion, in pixels of the camera's image.

#include <glm/mat3x3.hpp>
#include <glm/vec2.hpp>

#include <istream>
#include <ostream>

namespace runa {

struct IntrinsicParams {
    float fx = 1.0f; ///< focal length along x, pixels
    float fy = 1.0f; ///< focal length along y, pixels
    float cx = 0.0f; ///< principal point x, pixels
    float cy = 0.0f; ///< principal point y, pixels
    float skew = 0.0f;
    // Radial (k1, k2, k3) and tangential (p1, p2) distortion coefficients.
    float k1 = 0.0f, k2 = 0.0f, k3 = 0.0f;
    float p1 = 0.0f, p2 = 0.0f;

    /// The 3x3 camera matrix K (column-major, as GLM stores it).
    glm::mat3 GetCameraMatrix() const;

    /// Projects a point given in camera coordinates (z forward) to pixels, with distortion.
    /// Points at or behind the camera (z <= 0) give NaN coordinates.
    glm::vec2 Project(const glm::vec3& pointInCamera) const;

    /// Distorts normalised image coordinates (x/z, y/z).
    glm::vec2 Distort(const glm::vec2& normalized) const;

    bool HasDistortion() const { return k1 != 0 || k2 != 0 || k3 != 0 || p1 != 0 || p2 != 0; }

    /// Version word 1 then the ten floats, little-endian.
    void WriteToStream(std::ostream& out) const;
    /// Keeps the previous values unless a whole version-1 record could be read.
    bool ReadFromStream(std::istream& in);

    bool operator==(const IntrinsicParams&) const = default;
};

} // namespace runa
