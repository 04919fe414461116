// Space definitions in their byte-stream form, and the JSON form of whatever the stream gave:
// a definition that was read must be one the rest of the library can show and write.

#include "FuzzSupport.h"

#include <runa/SpaceDefinition.h>

#include <nlohmann/json.hpp>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace vexa::fuzz;
    QuietLog();
    runa::SpaceDefinition space;
    std::istringstream in = AsStream(data, size);
    if (!space.ReadFromStream(in))
        return 0;
    nlohmann::json json = nlohmann::json::object();
    space.WriteJson(json);
    Check(json.dump().size() > 2, "an empty JSON form");

    const std::string taken = Written([&space](std::ostream& out) { space.WriteToStream(out); });
    runa::SpaceDefinition again;
    std::istringstream back(taken, std::ios::binary);
    Check(again.ReadFromStream(back), "a space definition that was read cannot be read back");
    Check(again == space, "a space definition read back differently");
    return 0;
}
