#include <vexa/modules/PointCloudResource.h>

#include "modules/AddNew.h"

#include <vexa/modules/PointCloudGadget.h>

#include <vexa/draw/PointCloudRenderer.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace vexa::modules {

PointCloudResource::PointCloudResource(const std::string& name, const tesk::PointCloud& cloud)
    : Resource(name, "PointCloudResource")
{
    StoreData(cloud);
}

PointCloudResource::PointCloudResource(const std::string& name, const std::string& type,
                                       const tesk::PointCloud& cloud)
    : Resource(name, type)
{
    StoreData(cloud);
}

std::shared_ptr<Gadget> PointCloudResource::CreateGadget()
{
    return std::make_shared<PointCloudGadget>(this);
}

std::size_t PointCloudResource::SampleStep(std::size_t pointCount)
{
    return pointCount >= 1000 ? pointCount / 1000 : 1;
}

void PointCloudResource::StoreData(const tesk::PointCloud& cloud)
{
    renderer_ = std::make_shared<draw::PointCloudRenderer>(cloud);
    pointCount_ = static_cast<std::uint32_t>(cloud.Size());
    hasNormals_ = cloud.HasNormals();

    // A sample of about a thousand points is plenty to frame the camera and costs nothing
    // next to the copies below. The divisor is count / step (not the number of samples, which
    // can be one more); points with a non-finite coordinate are left out of sum and divisor so
    // that one bad point does not throw the camera into NaN.
    const std::span<const glm::vec3> positions = cloud.GetPositions();
    const std::size_t count = positions.size();
    const std::size_t step = SampleStep(count);
    glm::dvec3 sum(0.0);
    std::size_t skipped = 0;
    for (std::size_t i = 0; i < count; i += step) {
        const glm::vec3& p = positions[i];
        if (std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z))
            sum += glm::dvec3(p);
        else
            ++skipped;
    }
    const std::size_t divisor = count / step > skipped ? count / step - skipped : 0;
    centerOfMass_ = divisor > 0 ? glm::vec3(sum / static_cast<double>(divisor)) : glm::vec3(0.0f);
    double squares = 0.0;
    std::size_t samples = 0;
    for (std::size_t i = 0; i < count; i += step) {
        const glm::vec3& p = positions[i];
        if (!(std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z)))
            continue;
        const glm::dvec3 d = glm::dvec3(p) - glm::dvec3(centerOfMass_);
        squares += d.x * d.x + d.y * d.y + d.z * d.z;
        ++samples;
    }
    approxRadius_ =
        samples > 0 ? static_cast<float>(std::sqrt(squares / static_cast<double>(samples))) : 0.0f;

    StoreAttributes(cloud);
}

std::shared_ptr<PointCloudResource> AddPointCloud(const std::string& name, const tesk::PointCloud& cloud)
{
    return AddNew<PointCloudResource>(name, cloud);
}

} // namespace vexa::modules
