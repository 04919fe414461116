#include "tesk/MaterialModel.h"

#include <runa/rlog.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tesk {
namespace {

// Clamps into [low, high]; NaN is refused because clamping it would pick an arbitrary end.
bool ClampedFactor(float value, float low, float high, const char* what, const char* label, float& out)
{
    if (std::isnan(value)) {
        rlog::Warn(std::string(what) + " is NaN; keeping " + std::to_string(out), label);
        return false;
    }
    const float clamped = std::clamp(value, low, high);
    if (clamped != value)
        rlog::Warn(std::string(what) + " " + std::to_string(value) + " is outside " + std::to_string(low) +
                       ".." + std::to_string(high) + "; using " + std::to_string(clamped),
                   label);
    out = clamped;
    return true;
}

} // namespace

MaterialModel::MaterialModel(std::string name) : name_(std::move(name)) {}

void MaterialModel::SetAlbedo(const Color3f& albedo)
{
    const char* label = "tesk::MaterialModel::SetAlbedo";
    if (std::isnan(albedo.r) || std::isnan(albedo.g) || std::isnan(albedo.b)) {
        rlog::Warn("Albedo colour has a NaN component; keeping " + albedo_.ToHex(), label);
        return;
    }
    Color3f result = albedo_;
    ClampedFactor(albedo.r, 0.0f, 1.0f, "Albedo red", label, result.r);
    ClampedFactor(albedo.g, 0.0f, 1.0f, "Albedo green", label, result.g);
    ClampedFactor(albedo.b, 0.0f, 1.0f, "Albedo blue", label, result.b);
    albedo_ = result;
}

void MaterialModel::SetSpecular(float specular)
{
    ClampedFactor(specular, 0.0f, 1.0f, "Specular", "tesk::MaterialModel::SetSpecular", specular_);
}

void MaterialModel::SetShininess(float shininess)
{
    ClampedFactor(shininess, 1.0f, 1000.0f, "Shininess", "tesk::MaterialModel::SetShininess", shininess_);
}

void MaterialModel::SetMetallic(float metallic)
{
    ClampedFactor(metallic, 0.0f, 1.0f, "Metallic", "tesk::MaterialModel::SetMetallic", metallic_);
}

} // namespace tesk
