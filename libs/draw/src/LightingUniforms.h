#pragma once
// The lights and the material of the lit programs (surfaces, points, bones): every one of
// them takes up to four directional lights and the same material block.

namespace plor {
class Program;
}

namespace vexa::draw {

struct Material;
struct RenderContext;

class LightingUniforms {
public:
    static constexpr int kMaxLights = 4;

    /// Looks the locations up when `program` is not the build they were taken from, so a
    /// reloaded shader is picked up and an unchanged one costs nothing.
    void Refresh(plor::Program& program);

    /// The context's lights (the first four; a headlight from the eye when the scene has
    /// none, so lit shapes never come out black) and the material's colour and highlight.
    void Upload(const RenderContext& context, const Material& material) const;
    /// The lights alone, for programs that take a plain colour instead of a material.
    void UploadLights(const RenderContext& context, bool useLighting) const;

private:
    unsigned int program_ = 0;
    int baseColor_ = -1, specular_ = -1, shininess_ = -1, metallic_ = -1;
    int useLighting_ = -1, lightCount_ = -1, lightDirection_ = -1, lightColor_ = -1;
};

} // namespace vexa::draw
