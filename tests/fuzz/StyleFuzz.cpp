// Style blocks, the part of every gadget state file the drawing library reads, given to each
// style type and to the material block inside them.

#include "FuzzSupport.h"

#include <vexa/draw/GeometryStyle.h>
#include <vexa/draw/GraphStyle.h>
#include <vexa/draw/ImageStyle.h>
#include <vexa/draw/LineFieldStyle.h>
#include <vexa/draw/Material.h>
#include <vexa/draw/PointCloudStyle.h>
#include <vexa/draw/SkeletonStyle.h>

namespace {

template <class Block>
void CheckBlock(const std::uint8_t* data, std::size_t size)
{
    vexa::fuzz::CheckReadsBack(
        [] { return Block(); }, [](Block& block, std::istream& in) { return block.ReadFromStream(in); },
        [](const Block& block, std::ostream& out) { block.WriteToStream(out); }, data, size);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace vexa::draw;
    vexa::fuzz::QuietLog();
    CheckBlock<Style>(data, size);
    CheckBlock<Material>(data, size);
    CheckBlock<PointCloudStyle>(data, size);
    CheckBlock<GeometryStyle>(data, size);
    CheckBlock<SkeletonStyle>(data, size);
    CheckBlock<ImageStyle>(data, size);
    CheckBlock<LineFieldStyle>(data, size);
    CheckBlock<GraphStyle>(data, size);
    return 0;
}
