// options.bin: the general switches.

#include "StateFileChecks.h"

#include "core/GeneralOptions.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    vexa::fuzz::CheckStateFile<vexa::GeneralOptions>(data, size);
    return 0;
}
