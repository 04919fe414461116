#include "runa/IntrinsicParams.h"

#include "runa/BinaryStream.h"
#include "runa/rlog.h"

#include <cmath>
#include <limits>

namespace runa {
namespace {

constexpr std::uint32_t kIntrinsicsVersion = 1;

} // namespace

glm::mat3 IntrinsicParams::GetCameraMatrix() const
{
    // Rows of K are (fx, skew, cx), (0, fy, cy), (0, 0, 1); GLM takes columns.
    return glm::mat3(glm::vec3(fx, 0.0f, 0.0f), glm::vec3(skew, fy, 0.0f), glm::vec3(cx, cy, 1.0f));
}

glm::vec2 IntrinsicParams::Distort(const glm::vec2& normalized) const
{
    const float x = normalized.x;
    const float y = normalized.y;
    const float r2 = x * x + y * y;
    const float radial = 1.0f + r2 * (k1 + r2 * (k2 + r2 * k3));
    const float xy2 = 2.0f * x * y;
    return {x * radial + p1 * xy2 + p2 * (r2 + 2.0f * x * x),
            y * radial + p1 * (r2 + 2.0f * y * y) + p2 * xy2};
}

glm::vec2 IntrinsicParams::Project(const glm::vec3& pointInCamera) const
{
    if (!(pointInCamera.z > 0.0f)) {
        const float nan = std::numeric_limits<float>::quiet_NaN();
        return {nan, nan};
    }
    const glm::vec2 normalized(pointInCamera.x / pointInCamera.z, pointInCamera.y / pointInCamera.z);
    const glm::vec2 distorted = HasDistortion() ? Distort(normalized) : normalized;
    return {fx * distorted.x + skew * distorted.y + cx, fy * distorted.y + cy};
}

void IntrinsicParams::WriteToStream(std::ostream& out) const
{
    BinaryWriter writer(out);
    writer.WriteVersion(kIntrinsicsVersion);
    for (const float value : {fx, fy, cx, cy, skew, k1, k2, k3, p1, p2})
        writer.Write(value);
}

bool IntrinsicParams::ReadFromStream(std::istream& in)
{
    static const std::string label = "runa::IntrinsicParams::ReadFromStream";
    BinaryReader reader(in, label);

    std::uint32_t version = 0;
    if (!reader.Read(version))
        return false;
    if (version != kIntrinsicsVersion) {
        rlog::Warn("Unsupported intrinsic parameters version " + std::to_string(version) + " (expected " +
                       std::to_string(kIntrinsicsVersion) + ")",
                   label);
        return false;
    }

    // Read into a copy: a camera with half its values replaced would be worse than the old one.
    IntrinsicParams read;
    for (float* value : {&read.fx, &read.fy, &read.cx, &read.cy, &read.skew, &read.k1, &read.k2, &read.k3,
                         &read.p1, &read.p2}) {
        if (!reader.Read(*value))
            return false;
        if (!std::isfinite(*value)) {
            rlog::Warn("Intrinsic parameters hold a value that is not finite", label);
            return false;
        }
    }
    *this = read;
    return true;
}

} // namespace runa
