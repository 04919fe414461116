// A host that debugs a moving point with vexa::Debug(): for ten seconds a box, a sphere, a
// line trail and a message follow the point, redrawn every step with a short lifetime, so
// they vanish on their own once the host stops drawing them. The window then stays open until
// it is closed. `debug --frames N` stops after N steps.

#include <vexa/vexa.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <string>
#include <thread>

int main(int argc, char** argv)
{
    const long frames =
        argc == 3 && std::string(argv[1]) == "--frames" ? std::strtol(argv[2], nullptr, 10) : -1;
    vexa::SetAssetDirectory(VEXA_DEFAULT_ASSET_DIR);
    if (!vexa::Initialize())
        return 1;

    const auto start = std::chrono::steady_clock::now();
    std::deque<glm::vec3> trail;
    for (long frame = 0; vexa::IsOpen() && (frames < 0 || frame < frames); ++frame) {
        const float t = std::chrono::duration<float>(std::chrono::steady_clock::now() - start).count();
        if (t < 10.0f) {
            // A point on a slow Lissajous curve, as a tracker under test might report it.
            const glm::vec3 point(std::sin(1.3f * t), 0.4f * std::sin(2.1f * t), std::cos(0.9f * t));
            trail.push_back(point);
            if (trail.size() > 120)
                trail.pop_front();
            // Under the point, on a floor below the curve: a flat box like a shadow, with a
            // plumb line down to it and the trail of the last steps.
            const glm::vec3 floor(point.x, -0.6f, point.z);
            std::vector<geom::LineSegment3> lines{{point, floor}};
            for (std::size_t i = 1; i < trail.size(); ++i)
                lines.emplace_back(trail[i - 1], trail[i]);

            // Short lifetimes: each step replaces the shapes, and they go once it stops.
            vexa::Debug().DrawSphere({point, 0.05f}, {1.0f, 0.3f, 0.2f}, 0.2f);
            vexa::Debug().DrawBox(
                {floor - glm::vec3(0.1f, 0.01f, 0.1f), floor + glm::vec3(0.1f, 0.01f, 0.1f)},
                {0.2f, 0.5f, 1.0f}, 0.2f);
            vexa::Debug().DrawLines(lines, {1.0f, 0.9f, 0.2f}, 0.2f);
            char text[96];
            std::snprintf(text, sizeof(text), "t = %.1f s   point (%.2f, %.2f, %.2f)", static_cast<double>(t),
                          static_cast<double>(point.x), static_cast<double>(point.y),
                          static_cast<double>(point.z));
            vexa::Debug().LogMessage(text, 0.2f);
        }
        vexa::Update();
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    vexa::Terminate();
}
