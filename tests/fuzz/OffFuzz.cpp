// OFF text with every prefix (ST, C, N) and counts on the keyword line or their own.

#include "ReaderChecks.h"

#include "OffReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace vexa::fuzz;
    QuietLog();
    tesk::Mesh mesh = MarkedMesh();
    std::string error;
    const bool ok = vexa::viewer::ReadOffFromMemory(AsText(data, size), kInputName, mesh, error);
    CheckOutcome(ok, error, mesh);
    return 0;
}
