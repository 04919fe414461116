// Plain-text point lists under each layout an extension can impose.

#include "ReaderChecks.h"

#include "TextCloudReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace vexa::fuzz;
    using vexa::viewer::TextLayout;
    QuietLog();
    for (const TextLayout layout :
         {TextLayout::Columns, TextLayout::Pts, TextLayout::XyzNormals, TextLayout::XyzColors}) {
        tesk::PointCloud cloud = MarkedCloud();
        std::string error;
        const bool ok =
            vexa::viewer::ReadTextCloudFromMemory(AsText(data, size), kInputName, cloud, error, layout);
        CheckOutcome(ok, error, cloud);
    }
    return 0;
}
