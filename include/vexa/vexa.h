#pragma once
// The whole exported interface of VEXA, with the companion types hosts build their data with.

#include <vexa/Export.h>
#include <vexa/Platform.h>
#include <vexa/ResourceId.h>
#include <vexa/Version.h>

// The cameras, the GUI elements and their generator are built only with the graphics
// libraries, which bring the nubo headers along; without them these declarations would have
// no definitions.
#if __has_include(<nubo/GuiSystem.h>)
#include <vexa/Camera.h>
#include <vexa/CameraController.h>
#include <vexa/GuiGenerator.h>
#include <vexa/Lifecycle.h>
#include <vexa/gui/Elements.h>
#include <vexa/gui/StylingRows.h>
#include <vexa/modules/GeometryGadget.h>
#include <vexa/modules/GeometryResource.h>
#include <vexa/modules/PointCloudGadget.h>
#include <vexa/modules/PointCloudResource.h>
#endif

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
