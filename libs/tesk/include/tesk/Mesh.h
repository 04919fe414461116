#pragma once
// A triangle mesh as a host hands it over: its vertices are a PointCloud (so positions,
// normals, UVs, colours and float data work exactly as for point clouds), plus an optional
// triangulation and an optional material. A mesh without faces is drawn as its vertices.
//
// Face indices are not checked when they are set, because hosts may set faces before the
// vertices. Whoever draws a mesh calls ValidateFaces() (or FindInvalidFace()) first.

#include "tesk/MaterialModel.h"
#include "tesk/PointCloud.h"

#include <glm/vec3.hpp>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tesk {

class Mesh {
public:
    Mesh() = default;
    explicit Mesh(PointCloud vertices);
    Mesh(PointCloud vertices, std::vector<glm::uvec3> faces);

    // ---- vertices ----

    const PointCloud& GetVertices() const { return vertices_; }
    /// For filling the vertices in place (positions, normals, properties).
    PointCloud& GetVertices() { return vertices_; }
    void SetVertices(PointCloud vertices) { vertices_ = std::move(vertices); }
    std::size_t VertexCount() const { return vertices_.Size(); }
    bool HasNormals() const { return vertices_.HasNormals(); }
    /// True when the vertices carry a UV property.
    bool HasUVs() const { return vertices_.HasUVs(); }

    // ---- faces ----

    void SetFaces(std::span<const glm::uvec3> faces) { faces_.assign(faces.begin(), faces.end()); }
    void SetFaces(std::vector<glm::uvec3>&& faces) { faces_ = std::move(faces); }
    /// `indices` holds 3 * `faceCount` vertex indices. False (logged) for a null pointer.
    bool SetFaces(const std::uint32_t* indices, std::size_t faceCount);
    void ClearFaces() { faces_.clear(); }

    bool HasFaces() const { return !faces_.empty(); }
    std::size_t FaceCount() const { return faces_.size(); }
    std::span<const glm::uvec3> GetFaces() const { return faces_; }

    /// Index of the first face that refers to a vertex past the end; none when all are valid.
    std::optional<std::size_t> FindInvalidFace() const;
    /// Number of faces that refer to a vertex past the end.
    std::size_t CountInvalidFaces() const;
    /// True when every face refers to existing vertices. Otherwise logs one failure under
    /// `label` naming how many faces are bad, the first bad face, its indices and the vertex
    /// count, and returns false.
    bool ValidateFaces(const std::string& label = "tesk::Mesh::ValidateFaces") const;

    /// Sets one normal per vertex: the area-weighted mean of the normals of the faces that
    /// use it (counter-clockwise faces face the viewer). Faces with invalid indices are
    /// skipped; vertices on no face, or only on degenerate faces, get a zero normal.
    /// False (logged, normals unchanged) when the mesh has no faces.
    bool ComputeVertexNormals();

    // ---- material ----

    bool HasMaterial() const { return material_.has_value(); }
    const std::optional<MaterialModel>& GetMaterial() const { return material_; }
    void SetMaterial(MaterialModel material) { material_ = std::move(material); }
    void ClearMaterial() { material_.reset(); }

private:
    PointCloud vertices_;
    std::vector<glm::uvec3> faces_;
    std::optional<MaterialModel> material_;
};

} // namespace tesk
