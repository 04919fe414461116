#pragma once
// A triangle mesh as the viewer keeps it: the renderer (vertex arrays on the GPU after the
// first frame), the counts, material and centre the panel and camera need, and copies of the
// per-vertex colour sets and float data that gadgets turn into colours on demand.

#include <vexa/Export.h>
#include <vexa/Resource.h>
#include <vexa/modules/VertexAttributes.h>

#include <tesk/MaterialModel.h>
#include <tesk/Mesh.h>

#include <runa/SpaceDefinition.h>

#include <glm/ext/vector_double3.hpp>
#include <glm/vec3.hpp>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vexa::draw {
class MeshRenderer;
}

namespace vexa::modules {

class VEXA_API MeshResource : public Resource, public VertexAttributes {
public:
    /// Shows `mesh` under `name`; resource type "MeshResource".
    MeshResource(const std::string& name, const tesk::Mesh& mesh);

    std::shared_ptr<Gadget> CreateGadget() override;

    const std::shared_ptr<draw::MeshRenderer>& GetRenderer() const { return renderer_; }
    std::uint32_t GetPointCount() const { return pointCount_; }
    std::uint32_t GetFaceCount() const { return faceCount_; }
    const std::optional<tesk::MaterialModel>& GetMaterial() const { return material_; }
    /// The vertices carry texture coordinates.
    bool IsUvMappingAvailable() const { return uvMappingAvailable_; }
    /// A deliberately coarse centre (see CalculateCenterOfMass).
    const glm::vec3& GetCenterOfMass() const { return centerOfMass_; }
    /// Where focusing puts the eye: the centre plus (1, 1, 1).
    const glm::vec3& GetCameraPos() const { return cameraPos_; }

    /// The sum of vertices 0, 10, 20, ... divided by (vertex count / 10) in whole numbers:
    /// cheap for any size, and as coarse as intended; fewer than ten vertices divide by zero
    /// and give a non-finite centre (which the camera refuses to look at).
    static glm::vec3 CalculateCenterOfMass(const tesk::Mesh& mesh);

protected:
    /// Takes everything from `mesh` anew.
    void StoreNeededData(const tesk::Mesh& mesh);

private:
    std::shared_ptr<draw::MeshRenderer> renderer_;
    std::uint32_t pointCount_ = 0;
    std::uint32_t faceCount_ = 0;
    std::optional<tesk::MaterialModel> material_;
    bool uvMappingAvailable_ = false;
    glm::vec3 centerOfMass_{0.0f};
    glm::vec3 cameraPos_{1.0f};
};

/// Makes a resource of `mesh` under `name` and, when the library is running, shows it (or
/// replaces the listed one with that name).
VEXA_API std::shared_ptr<MeshResource> AddMesh(const std::string& name, const tesk::Mesh& mesh);

} // namespace vexa::modules
