// window.bin: the remembered window placement.

#include "StateFileChecks.h"

#include "core/WindowManager.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    vexa::fuzz::CheckStateFile<vexa::WindowManager>(data, size);
    return 0;
}
