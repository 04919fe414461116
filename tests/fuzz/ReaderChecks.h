#pragma once
// The promises every model reader makes, checked after each fuzz input: a refusal names the
// input and leaves the target as it was, and what is accepted is a consistent mesh.

#include "FuzzSupport.h"

#include <tesk/Mesh.h>
#include <tesk/PointCloud.h>

#include <string>

namespace vexa::fuzz {

/// The name the fuzz programs give their input; every error must start with it.
inline const std::string kInputName = "input";

/// A target that is not empty, so that "left unchanged" can be seen after a refusal.
inline tesk::PointCloud MarkedCloud()
{
    tesk::PointCloud cloud;
    cloud.AddPoint({7.0f, 8.0f, 9.0f});
    return cloud;
}

inline tesk::Mesh MarkedMesh()
{
    return tesk::Mesh(MarkedCloud());
}

inline bool IsMarked(const tesk::PointCloud& cloud)
{
    return cloud.Size() == 1 && cloud.GetPositions()[0] == glm::vec3(7.0f, 8.0f, 9.0f) &&
           cloud.PropertyCount() == 0;
}

inline void CheckOutcome(bool ok, const std::string& error, const tesk::PointCloud& cloud)
{
    if (ok)
        return;
    Check(error.rfind(kInputName + ": ", 0) == 0 && error.size() > kInputName.size() + 2,
          "a refusal without a message naming the input");
    Check(IsMarked(cloud), "a refused input changed the point cloud");
}

inline void CheckOutcome(bool ok, const std::string& error, const tesk::Mesh& mesh)
{
    if (ok) {
        Check(!mesh.FindInvalidFace().has_value(), "an accepted mesh with a face past its vertices");
        return;
    }
    CheckOutcome(ok, error, mesh.GetVertices());
    Check(!mesh.HasFaces(), "a refused input added faces");
}

} // namespace vexa::fuzz
