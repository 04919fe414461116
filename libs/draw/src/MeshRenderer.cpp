#include <vexa/draw/MeshRenderer.h>

#include <plor/Texture.h>

#include <tesk/Image.h>
#include <tesk/Mesh.h>

#include <runa/rlog.h>

#include <glm/glm.hpp>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <string>
#include <system_error>

namespace vexa::draw {

namespace {

constexpr const char* kBuildLabel = "vexa::draw::MeshRenderer::MeshRenderer";
constexpr const char* kTextureLabel = "vexa::draw::MeshRenderer::LoadAlbedoTexture";

static_assert(sizeof(glm::uvec3) == 3 * sizeof(std::uint32_t), "faces are read as packed index triples");

bool IsValidFace(const glm::uvec3& face, std::size_t vertexCount)
{
    return face.x < vertexCount && face.y < vertexCount && face.z < vertexCount;
}

} // namespace

MeshRenderer::MeshRenderer(const tesk::Mesh& mesh)
{
    Build(mesh);
}

MeshRenderer::MeshRenderer(tesk::Mesh&& mesh)
{
    Build(mesh);
    mesh = tesk::Mesh();
}

MeshRenderer::~MeshRenderer() = default;

void MeshRenderer::Build(const tesk::Mesh& mesh)
{
    material_ = mesh.GetMaterial();
    const tesk::PointCloud& vertices = mesh.GetVertices();
    const std::size_t count = vertices.Size();
    const std::span<const glm::uvec3> faces = mesh.GetFaces();
    if (count == 0) {
        droppedFaces_ = faces.size();
        rlog::Warn("The mesh has no vertices" +
                       (faces.empty() ? std::string() : " but " + std::to_string(faces.size()) + " faces") +
                       "; nothing will be drawn",
                   kBuildLabel);
        return;
    }

    // Faces pointing past the vertices are left out rather than refusing the whole mesh:
    // a host's off-by-one in a few faces should not hide everything else.
    std::vector<std::uint32_t> keptFaces;
    std::span<const std::uint32_t> triangles(reinterpret_cast<const std::uint32_t*>(faces.data()),
                                             faces.size() * 3);
    droppedFaces_ = mesh.CountInvalidFaces();
    if (droppedFaces_ > 0) {
        const std::size_t first = mesh.FindInvalidFace().value_or(0);
        const glm::uvec3& bad = faces[first];
        rlog::Fail("Leaving out " + std::to_string(droppedFaces_) + " of " + std::to_string(faces.size()) +
                       " faces that refer to vertices past the end; the first is face " +
                       std::to_string(first) + " (" + std::to_string(bad.x) + ", " + std::to_string(bad.y) +
                       ", " + std::to_string(bad.z) + ") but the mesh has " + std::to_string(count) +
                       " vertices",
                   kBuildLabel);
        keptFaces.reserve((faces.size() - droppedFaces_) * 3);
        for (const glm::uvec3& face : faces)
            if (IsValidFace(face, count))
                keptFaces.insert(keptFaces.end(), {face.x, face.y, face.z});
        triangles = keptFaces;
    }

    PreparedSurface surface;
    const std::vector<std::uint32_t> edges = CollectEdges(triangles, {});
    surface.triangleIndexCount = triangles.size();
    surface.indices.reserve(triangles.size() + edges.size());
    surface.indices.assign(triangles.begin(), triangles.end());
    surface.indices.insert(surface.indices.end(), edges.begin(), edges.end());
    std::vector<std::uint32_t>().swap(keptFaces);

    const std::span<const glm::vec3> positions = vertices.GetPositions();
    surface.positions.assign(positions.begin(), positions.end());

    hasMeshNormals_ = vertices.HasNormals();
    if (hasMeshNormals_) {
        const std::span<const glm::vec3> normals = vertices.GetNormals();
        surface.normals.assign(normals.begin(), normals.end());
    } else if (!triangles.empty()) {
        surface.normals = ComputeNormals(
            positions, std::span<const std::uint32_t>(surface.indices.data(), surface.triangleIndexCount));
    }

    // Textures hold their top row at t = 0, meshes their bottom row at v = 0.
    const std::span<const glm::vec2> uvs = vertices.GetUVs();
    surface.uvs.resize(uvs.size());
    std::transform(uvs.begin(), uvs.end(), surface.uvs.begin(),
                   [](const glm::vec2& uv) { return glm::vec2(uv.x, 1.0f - uv.y); });

    SetPreparedSurface(std::move(surface), vertices.ComputeBoundingBox());
}

bool MeshRenderer::LoadAlbedoTexture()
{
    if (albedoLoadTried_)
        return albedo_ != nullptr;
    albedoLoadTried_ = true;
    if (!HasAlbedoTexturePath())
        return false;

    const std::string& path = material_->GetAlbedoTexture();
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) {
        rlog::Fail("The albedo texture file \"" + path + "\" of material \"" + material_->GetName() +
                       "\" does not exist; the mesh is drawn without it",
                   kTextureLabel);
        return false;
    }
    tesk::Image image;
    if (!image.LoadPng(path))
        return false; // the reader has logged the path and the reason
    auto texture = std::make_shared<plor::Texture>(std::move(image));
    texture->SetWrap(plor::TextureWrap::Repeat);
    texture->SetFilter(plor::TextureFilter::LinearMipmap);
    albedo_ = std::move(texture);
    return true;
}

std::shared_ptr<plor::Texture> MeshRenderer::GetAlbedoTexture()
{
    LoadAlbedoTexture();
    return albedo_;
}

plor::Texture* MeshRenderer::GetDefaultAlbedoTexture()
{
    // Only asked for while drawing in texture mode, so a mesh never shown that way never
    // reads its file.
    LoadAlbedoTexture();
    return albedo_.get();
}

Material MeshRenderer::GetSuggestedMaterial() const
{
    Material material;
    if (!material_)
        return material;
    material.color = material_->GetAlbedo();
    material.specular = material_->GetSpecular();
    material.shininess = std::clamp(material_->GetShininess(), 1.0f, 512.0f);
    material.metallic = material_->GetMetallic() > 0.5f;
    return material;
}

} // namespace vexa::draw
