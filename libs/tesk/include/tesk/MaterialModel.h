#pragma once
// The surface look of a mesh: a base (albedo) colour or texture and the three factors of the
// viewer's lighting model. Setters keep every factor in the range the shaders expect.

#include "tesk/Color.h"

#include <string>
#include <utility>

namespace tesk {

class MaterialModel {
public:
    MaterialModel() = default;
    explicit MaterialModel(std::string name);

    const std::string& GetName() const { return name_; }
    void SetName(std::string name) { name_ = std::move(name); }

    /// Components are clamped to 0..1; a NaN component keeps the previous colour (logged).
    void SetAlbedo(const Color3f& albedo);
    const Color3f& GetAlbedo() const { return albedo_; }

    /// Strength of the specular highlight, 0..1.
    void SetSpecular(float specular);
    float GetSpecular() const { return specular_; }
    /// Phong exponent, 1..1000: small values give broad highlights.
    void SetShininess(float shininess);
    float GetShininess() const { return shininess_; }
    /// 0 = dielectric, 1 = metal (highlights take the albedo colour).
    void SetMetallic(float metallic);
    float GetMetallic() const { return metallic_; }

    /// File path of an albedo texture (PNG), used with the mesh's UV property. Relative
    /// paths are resolved by whoever loads the texture.
    void SetAlbedoTexture(std::string path) { albedoTexture_ = std::move(path); }
    void ClearAlbedoTexture() { albedoTexture_.clear(); }
    bool HasAlbedoTexture() const { return !albedoTexture_.empty(); }
    const std::string& GetAlbedoTexture() const { return albedoTexture_; }

    bool operator==(const MaterialModel&) const = default;

private:
    std::string name_ = "default";
    Color3f albedo_{0.8f, 0.8f, 0.8f};
    float specular_ = 0.5f;
    float shininess_ = 32.0f;
    float metallic_ = 0.0f;
    std::string albedoTexture_;
};

} // namespace tesk
