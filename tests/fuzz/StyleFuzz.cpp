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

#include <string>

namespace {

using vexa::fuzz::Check;

template <class Block>
std::string Bytes(const Block& block)
{
    return vexa::fuzz::Written([&block](std::ostream& out) { block.WriteToStream(out); });
}

template <class Block>
void CheckBlock(const std::uint8_t* data, std::size_t size)
{
    Block block;
    const std::string before = Bytes(block);
    std::istringstream in = vexa::fuzz::AsStream(data, size);
    if (!block.ReadFromStream(in)) {
        Check(Bytes(block) == before, "a refused style block changed the style");
        return;
    }
    const std::string taken = Bytes(block);
    Block again;
    std::istringstream back(taken, std::ios::binary);
    Check(again.ReadFromStream(back), "a style block that was read cannot be read back");
    Check(Bytes(again) == taken, "a style block read back differently");
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
