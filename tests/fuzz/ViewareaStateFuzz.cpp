// viewareas.bin: camera, grid, clipping and sidebar state of every view area.

#include "StateFileChecks.h"

#include "core/ViewareaSettings.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    vexa::fuzz::CheckStateFile<vexa::ViewareaSettings>(data, size);
    return 0;
}
