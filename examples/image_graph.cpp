// A host that shows a picture and a live plot side by side: a generated colour gradient with a
// translucent disc on the left, and on the right a graph of a running value that grows while
// the program runs. Its look file (two view areas, each listing what it shows under "units")
// is written at start. `image_graph --frames N` stops after N steps.

#include <vexa/vexa.h>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace {

// Resource ids are "<type>:<name>"; a view area shows the ones its "units" name.
const char* const kLook = R"({
  "vexa": {
    "version": "1.0",
    "caption": "VEXA - image and graph",
    "width": 1200,
    "height": 600,
    "views": [
      { "position": "0, 0; 0, 0", "size": "0.5, 0; 1, 0", "sidebar-visible": false, "axes": false,
        "units": [ { "id": "ImageResource:Gradient", "auto-select": true } ] },
      { "position": "0.5, 0; 0, 0", "size": "0.5, 0; 1, 0", "sidebar-visible": false, "axes": false,
        "units": [ { "id": "GraphResource:Running total", "auto-select": true } ] }
    ]
  }
})";

// Red grows to the right, green downwards, blue is constant; a disc in the middle is white
// and half transparent, so the viewer's checkerboard shows through it.
tesk::Image MakeGradient(std::uint32_t size)
{
    std::vector<std::uint8_t> pixels(static_cast<std::size_t>(size) * size * 4);
    const float centre = size / 2.0f, radius = size / 4.0f;
    for (std::uint32_t y = 0; y < size; ++y)
        for (std::uint32_t x = 0; x < size; ++x) {
            std::uint8_t* p = &pixels[(static_cast<std::size_t>(y) * size + x) * 4];
            const bool inDisc = std::hypot(x + 0.5f - centre, y + 0.5f - centre) < radius;
            p[0] = inDisc ? 255 : static_cast<std::uint8_t>(255 * x / (size - 1));
            p[1] = inDisc ? 255 : static_cast<std::uint8_t>(255 * y / (size - 1));
            p[2] = inDisc ? 255 : 96;
            p[3] = inDisc ? 128 : 255;
        }
    return tesk::Image(size, size, 4, std::move(pixels));
}

} // namespace

int main(int argc, char** argv)
{
    const long frames =
        argc == 3 && std::string(argv[1]) == "--frames" ? std::strtol(argv[2], nullptr, 10) : -1;
    // Beside the settings the library keeps in the working directory (./vexa/).
    const std::filesystem::path look = "image_graph_look.json";
    std::ofstream(look) << kLook;
    vexa::SetAssetDirectory(VEXA_DEFAULT_ASSET_DIR);
    if (!vexa::Initialize(look.string()))
        return 1;

    // Moved in: the pixels are not copied again.
    vexa::modules::AddImage("Gradient", MakeGradient(256));
    auto graph = std::make_shared<vexa::modules::GraphResource>("Running total");
    vexa::AddResource(graph);

    // A total that grows by a wobbling amount; the plot keeps the latest samples only.
    std::vector<glm::vec2> samples;
    float total = 0.0f;
    auto addSample = [&] {
        const float n = samples.empty() ? 0.0f : samples.back().x + 1.0f;
        total += 1.0f + 0.8f * std::sin(n * 0.4f);
        samples.emplace_back(n, total);
        if (samples.size() > 300)
            samples.erase(samples.begin());
    };
    for (int i = 0; i < 40; ++i)
        addSample();
    graph->SetData(samples);

    for (long frame = 0; vexa::IsOpen() && (frames < 0 || frame < frames); ++frame) {
        // A few new samples a second; every SetData rebuilds the graph's gadgets.
        if (frame % 10 == 9) {
            addSample();
            graph->SetData(samples);
        }
        vexa::Update();
        std::this_thread::sleep_for(std::chrono::milliseconds(16));
    }
    vexa::Terminate();
}
