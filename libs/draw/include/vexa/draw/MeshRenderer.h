#pragma once
#include <vexa/draw/ElementRenderer.h>

#include <tesk/MaterialModel.h>

#include <memory>
#include <optional>
#include <string>

namespace tesk {
class Mesh;
}

namespace vexa::draw {

/// Draws a tesk::Mesh with the geometry style. A triangulated mesh uses every render mode;
/// a mesh without faces is drawn as its vertices whatever the mode.
///
/// The vertex arrays are copied once, straight into the layout the GPU buffers take, and
/// that copy is dropped after the upload. Faces that refer to vertices past the end are left
/// out (one logged message names the first of them); the others are drawn.
///
/// UVs follow the usual mesh convention: v = 0 is the bottom row of the texture image.
/// Vertices without normals get area-weighted face normals; vertices of a mesh without
/// faces and normals are shaded as facing the viewer.
class MeshRenderer : public ElementRenderer {
public:
    explicit MeshRenderer(const tesk::Mesh& mesh);
    /// Same result; the mesh is left empty, so its memory is freed as soon as its arrays are
    /// copied rather than when the caller drops it.
    explicit MeshRenderer(tesk::Mesh&& mesh);
    ~MeshRenderer() override;

    /// Faces drawn (the mesh's faces minus the dropped ones).
    std::size_t GetFaceCount() const { return GetTriangleCount(); }
    /// Faces left out because they refer to vertices past the end.
    std::size_t GetDroppedFaceCount() const { return droppedFaces_; }
    /// True when the mesh brought its own normals.
    bool HasMeshNormals() const { return hasMeshNormals_; }

    /// The mesh's material, when it has one.
    const std::optional<tesk::MaterialModel>& GetMaterialModel() const { return material_; }
    /// True when the mesh's material names an albedo texture file (whether it loads or not).
    bool HasAlbedoTexturePath() const { return material_ && material_->HasAlbedoTexture(); }

    /// Reads the material's albedo texture file into a texture (CPU only, no GL context
    /// needed; uploaded at its first use). Only the first call reads the file; a missing or
    /// unreadable file logs its path once and leaves no texture. Returns whether a texture
    /// is there.
    bool LoadAlbedoTexture();
    /// The albedo texture, loaded on the first call (see LoadAlbedoTexture); null without
    /// one. A gadget puts it into GeometryStyle::albedoTexture; ColorMode::Texture also
    /// uses it when the style holds no texture of its own.
    std::shared_ptr<plor::Texture> GetAlbedoTexture();

    /// The Material a style would take from the mesh's material model (albedo colour,
    /// specular, shininess, metallic above one half); the default Material without one.
    Material GetSuggestedMaterial() const;

protected:
    plor::Texture* GetDefaultAlbedoTexture() override;

private:
    void Build(const tesk::Mesh& mesh);

    std::optional<tesk::MaterialModel> material_;
    std::shared_ptr<plor::Texture> albedo_;
    bool albedoLoadTried_ = false;
    std::size_t droppedFaces_ = 0;
    bool hasMeshNormals_ = false;
};

} // namespace vexa::draw
