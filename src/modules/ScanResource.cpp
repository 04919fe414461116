#include <vexa/modules/ScanResource.h>

#include "modules/AddNew.h"

#include <vexa/modules/ScanGadget.h>

namespace vexa::modules {

ScanResource::ScanResource(const std::string& name, const tesk::Scan& scan)
    : PointCloudResource(name, "ScanResource", scan.GetPointCloud()), resolution_(scan.GetResolution()),
      cameraParams_(scan.GetCameraParams()), cameraPosition_(scan.GetCameraPosition()),
      cameraUp_(scan.GetCameraUp()), cameraBasis_(scan.GetCameraBasis()),
      basisDefinition_(scan.GetBasisDefinition())
{
}

std::shared_ptr<Gadget> ScanResource::CreateGadget()
{
    return std::make_shared<ScanGadget>(this);
}

std::shared_ptr<ScanResource> AddScan(const std::string& name, const tesk::Scan& scan)
{
    return AddNew<ScanResource>(name, scan);
}

} // namespace vexa::modules
