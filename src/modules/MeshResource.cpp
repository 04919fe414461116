#include <vexa/modules/MeshResource.h>

#include "modules/AddNew.h"

#include <vexa/modules/MeshGadget.h>

#include <vexa/draw/MeshRenderer.h>

namespace vexa::modules {

MeshResource::MeshResource(const std::string& name, const tesk::Mesh& mesh) : Resource(name, "MeshResource")
{
    StoreNeededData(mesh);
}

std::shared_ptr<Gadget> MeshResource::CreateGadget()
{
    return std::make_shared<MeshGadget>(this);
}

glm::vec3 MeshResource::CalculateCenterOfMass(const tesk::Mesh& mesh)
{
    const std::span<const glm::vec3> positions = mesh.GetVertices().GetPositions();
    glm::dvec3 sum(0.0);
    for (std::size_t i = 0; i < positions.size(); i += 10)
        sum += glm::dvec3(positions[i]);
    const auto divisor = static_cast<float>(positions.size() / 10);
    return glm::vec3(sum) / divisor;
}

void MeshResource::StoreNeededData(const tesk::Mesh& mesh)
{
    const tesk::PointCloud& vertices = mesh.GetVertices();
    renderer_ = std::make_shared<draw::MeshRenderer>(mesh);
    pointCount_ = static_cast<std::uint32_t>(mesh.VertexCount());
    faceCount_ = mesh.HasFaces() ? static_cast<std::uint32_t>(mesh.FaceCount()) : 0u;
    material_ = mesh.GetMaterial();
    uvMappingAvailable_ = vertices.HasUVs();
    centerOfMass_ = CalculateCenterOfMass(mesh);
    cameraPos_ = centerOfMass_ + glm::vec3(1.0f);
    StoreAttributes(vertices);
}

std::shared_ptr<MeshResource> AddMesh(const std::string& name, const tesk::Mesh& mesh)
{
    return AddNew<MeshResource>(name, mesh);
}

} // namespace vexa::modules
