// PCD headers with ascii, binary and LZF-compressed bodies.

#include "ReaderChecks.h"

#include "PcdReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace vexa::fuzz;
    QuietLog();
    tesk::PointCloud cloud = MarkedCloud();
    std::string error;
    const bool ok = vexa::viewer::ReadPcdFromMemory(AsText(data, size), kInputName, cloud, error);
    CheckOutcome(ok, error, cloud);
    return 0;
}
