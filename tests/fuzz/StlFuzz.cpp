// STL, ASCII and binary (the reader tells them apart by content and size).

#include "ReaderChecks.h"

#include "StlReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace vexa::fuzz;
    QuietLog();
    tesk::Mesh mesh = MarkedMesh();
    std::string error;
    const bool ok = vexa::viewer::ReadStlFromMemory(AsText(data, size), kInputName, mesh, error);
    CheckOutcome(ok, error, mesh);
    return 0;
}
