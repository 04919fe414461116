// PLY headers and bodies in every encoding, read both as a mesh and as a point cloud.

#include "ReaderChecks.h"

#include "PlyReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace vexa::fuzz;
    QuietLog();
    const std::string_view bytes = AsText(data, size);
    std::string error;

    tesk::Mesh mesh = MarkedMesh();
    const bool meshRead = vexa::viewer::ReadPlyFromMemory(bytes, kInputName, mesh, error);
    CheckOutcome(meshRead, error, mesh);

    tesk::PointCloud cloud = MarkedCloud();
    error.clear();
    const bool cloudRead = vexa::viewer::ReadPlyFromMemory(bytes, kInputName, cloud, error);
    CheckOutcome(cloudRead, error, cloud);
    // The faces are the only difference: the vertices are read by the same code.
    if (meshRead && cloudRead)
        Check(mesh.GetVertices().Size() == cloud.Size(), "mesh and cloud reads disagree on the vertices");
    return 0;
}
