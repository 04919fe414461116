#include "tesk/Mesh.h"

#include <runa/rlog.h>

#include <glm/geometric.hpp>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

namespace tesk {
namespace {

bool IsValidFace(const glm::uvec3& face, std::size_t vertexCount)
{
    return face.x < vertexCount && face.y < vertexCount && face.z < vertexCount;
}

} // namespace

Mesh::Mesh(PointCloud vertices) : vertices_(std::move(vertices)) {}

Mesh::Mesh(PointCloud vertices, std::vector<glm::uvec3> faces)
    : vertices_(std::move(vertices)), faces_(std::move(faces))
{
}

bool Mesh::SetFaces(const std::uint32_t* indices, std::size_t faceCount)
{
    if (indices == nullptr && faceCount > 0) {
        rlog::Fail("Null index array for " + std::to_string(faceCount) + " faces", "tesk::Mesh::SetFaces");
        return false;
    }
    static_assert(sizeof(glm::uvec3) == 3 * sizeof(std::uint32_t), "glm::uvec3 must be three packed indices");
    std::vector<glm::uvec3> faces(faceCount);
    if (faceCount > 0)
        std::memcpy(faces.data(), indices, faceCount * sizeof(glm::uvec3));
    faces_ = std::move(faces);
    return true;
}

std::optional<std::size_t> Mesh::FindInvalidFace() const
{
    const std::size_t vertexCount = vertices_.Size();
    for (std::size_t i = 0; i < faces_.size(); ++i)
        if (!IsValidFace(faces_[i], vertexCount))
            return i;
    return std::nullopt;
}

std::size_t Mesh::CountInvalidFaces() const
{
    const std::size_t vertexCount = vertices_.Size();
    return static_cast<std::size_t>(
        std::count_if(faces_.begin(), faces_.end(),
                      [vertexCount](const glm::uvec3& f) { return !IsValidFace(f, vertexCount); }));
}

bool Mesh::ValidateFaces(const std::string& label) const
{
    const std::optional<std::size_t> first = FindInvalidFace();
    if (!first)
        return true;
    const glm::uvec3& face = faces_[*first];
    rlog::Fail(std::to_string(CountInvalidFaces()) + " of " + std::to_string(faces_.size()) +
                   " faces refer to vertices past the end; the first is face " + std::to_string(*first) +
                   " (" + std::to_string(face.x) + ", " + std::to_string(face.y) + ", " +
                   std::to_string(face.z) + ") but the mesh has " + std::to_string(vertices_.Size()) +
                   " vertices",
               label);
    return false;
}

bool Mesh::ComputeVertexNormals()
{
    if (faces_.empty()) {
        rlog::Fail("The mesh has no faces to take normals from", "tesk::Mesh::ComputeVertexNormals");
        return false;
    }
    const std::span<const glm::vec3> positions = vertices_.GetPositions();
    std::vector<glm::vec3> normals(positions.size(), glm::vec3(0.0f));
    for (const glm::uvec3& face : faces_) {
        if (!IsValidFace(face, positions.size()))
            continue;
        // The cross product's length is twice the face's area, which is the weight we want.
        const glm::vec3 weighted =
            glm::cross(positions[face.y] - positions[face.x], positions[face.z] - positions[face.x]);
        normals[face.x] += weighted;
        normals[face.y] += weighted;
        normals[face.z] += weighted;
    }
    for (glm::vec3& n : normals) {
        const float length = glm::length(n);
        n = length > 0.0f && std::isfinite(length) ? n / length : glm::vec3(0.0f);
    }
    return vertices_.SetNormals(std::move(normals));
}

} // namespace tesk
