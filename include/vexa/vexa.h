#pragma once
// The whole exported interface of VEXA, with the companion types hosts build their data with.

#include <vexa/Config.h>

#include <vexa/Export.h>
#include <vexa/Platform.h>
#include <vexa/ResourceId.h>
#include <vexa/Version.h>

#include <vexa/Camera.h>
#include <vexa/CameraController.h>
#include <vexa/Debugger.h>
#include <vexa/GuiGenerator.h>
#include <vexa/Lifecycle.h>
#include <vexa/gui/Elements.h>
#include <vexa/gui/StylingRows.h>
#include <vexa/modules/CameraAnimGadget.h>
#include <vexa/modules/CameraAnimResource.h>
#include <vexa/modules/ColoringChoice.h>
#include <vexa/modules/ColoringData.h>
#include <vexa/modules/GeometryGadget.h>
#include <vexa/modules/GeometryResource.h>
#include <vexa/modules/GraphGadget.h>
#include <vexa/modules/GraphResource.h>
#include <vexa/modules/GuiGadget.h>
#include <vexa/modules/GuiResource.h>
#include <vexa/modules/ImageResource.h>
#include <vexa/modules/MeshGadget.h>
#include <vexa/modules/MeshResource.h>
#include <vexa/modules/PointCloudGadget.h>
#include <vexa/modules/PointCloudResource.h>
#include <vexa/modules/ScanGadget.h>
#include <vexa/modules/ScanResource.h>
#include <vexa/modules/SkeletonGadget.h>
#include <vexa/modules/SkeletonResource.h>
#include <vexa/modules/TextureGadget.h>
#include <vexa/modules/VertexAttributes.h>

#include <runa/BasisDefinition.h>
#include <runa/BinaryStream.h>
#include <runa/IntrinsicParams.h>
#include <runa/SpaceDefinition.h>
#include <runa/Version.h>
#include <runa/rlog.h>

#include <tesk/Color.h>
#include <tesk/ColorMap.h>
#include <tesk/Frustum.h>
#include <tesk/Image.h>
#include <tesk/Interpolator.h>
#include <tesk/MaterialModel.h>
#include <tesk/Mesh.h>
#include <tesk/PointCloud.h>
#include <tesk/Scan.h>
#include <tesk/Skeleton.h>
#include <tesk/SkeletonAction.h>
#include <tesk/SkeletonPose.h>
#include <tesk/Transform.h>
#include <tesk/geom/Aabb.h>
#include <tesk/geom/LineSegment.h>
#include <tesk/geom/Sphere.h>
