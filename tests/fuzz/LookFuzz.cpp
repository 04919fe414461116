// Look files: JSON that sets the window, the switches, the background and the view areas.

#include "FuzzSupport.h"

#include "core/LookParser.h"

#include <exception>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace vexa::fuzz;
    QuietLog();
    static const vexa::WindowLook defaults =
        vexa::LookParser::FromString(R"({"vexa": {"version": "1.0"}})").GetWindowLook();
    try {
        const vexa::LookParser look = vexa::LookParser::FromString(std::string(AsText(data, size)));
        Check(!look.GetViewareaLooks().empty(), "a look without view areas");
        if (!look.Succeeded())
            Check(look.GetWindowLook() == defaults, "a failed look that is not the default one");
    } catch (const std::exception&) {
        // Text that is not JSON, a look without a version and a malformed placement throw by
        // design; the host catches them around the parser.
    }
    return 0;
}
