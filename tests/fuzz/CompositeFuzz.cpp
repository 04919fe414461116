// The placement texts of the look file: "relative,pixels" and "x;y" pairs of them.

#include "FuzzSupport.h"

#include "core/CompositeCoordinates.h"
#include "core/ParseError.h"

#include <stdexcept>

namespace {

template <class Parse>
void Attempt(Parse&& parse)
{
    // The three refusals the functions promise; anything else escaping is a fault.
    try {
        parse();
    } catch (const vexa::ParseError&) {
    } catch (const std::invalid_argument&) {
    } catch (const std::out_of_range&) {
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace vexa::fuzz;
    QuietLog();
    const std::string text(AsText(data, size));
    Attempt([&] { vexa::StringToCompositeFloat(text); });
    Attempt([&] { vexa::StringToCompositePosition(text); });
    Attempt([&] { vexa::StringToCompositeSize(text); });
    return 0;
}
