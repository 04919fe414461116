// OBJ text. No folder is given, so material libraries are not opened: the fuzzer stays
// within the bytes it controls.

#include "ReaderChecks.h"

#include "ObjReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace vexa::fuzz;
    QuietLog();
    tesk::Mesh mesh = MarkedMesh();
    std::string error;
    const bool ok = vexa::viewer::ReadObjFromMemory(AsText(data, size), kInputName, "", mesh, error);
    CheckOutcome(ok, error, mesh);
    return 0;
}
