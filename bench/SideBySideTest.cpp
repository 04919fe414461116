// The side-by-side benchmark's own parts: the host cloud it is defined on, the floor's camera
// and picture, and the hand-over. A wrong part would make every ratio it reports wrong.

#include "BareFloor.h"
#include "HostCloud.h"
#include "HostPath.h"

#include <vexa/modules/PointCloudResource.h>

#include <tesk/Image.h>

#include <GLFW/glfw3.h>
#include <gtest/gtest.h>

#include <glm/glm.hpp>

#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <type_traits>
#include <variant>

namespace {

TEST(HostCloud, IsADeterministicScanOfExactlyTheAskedCount)
{
    for (const std::size_t count : {std::size_t{0}, std::size_t{1}, std::size_t{7}, std::size_t{10'001}}) {
        const bench::HostCloud cloud = bench::MakeHostCloud(count);
        EXPECT_EQ(cloud.Size(), count);
        EXPECT_EQ(cloud.rgb.size(), 3 * count);
        EXPECT_EQ(cloud.Bytes(), 15 * count);
    }
    const bench::HostCloud a = bench::MakeHostCloud(10'001);
    const bench::HostCloud b = bench::MakeHostCloud(10'001);
    EXPECT_EQ(a.xyz, b.xyz);
    EXPECT_EQ(a.rgb, b.rgb);
    EXPECT_EQ(&bench::HostCloudOf(10'001), &bench::HostCloudOf(10'001)) << "built once, kept";

    // The box holds every point and is reached; neighbours in the array are neighbours on the
    // ground (a scan line), apart from the step to the next line.
    std::size_t jumps = 0;
    glm::vec3 lo(INFINITY);
    glm::vec3 hi(-INFINITY);
    for (std::size_t i = 0; i < a.Size(); ++i) {
        const glm::vec3 p(a.xyz[3 * i], a.xyz[3 * i + 1], a.xyz[3 * i + 2]);
        lo = glm::min(lo, p);
        hi = glm::max(hi, p);
        if (i > 0 && glm::distance(p, glm::vec3(a.xyz[3 * i - 3], a.xyz[3 * i - 2], a.xyz[3 * i - 1])) > 2.0f)
            ++jumps;
    }
    EXPECT_EQ(lo, a.minimum);
    EXPECT_EQ(hi, a.maximum);
    EXPECT_LT(jumps, 5u);
    EXPECT_NEAR(hi.x - lo.x, 100.0f, 1.0f);
    EXPECT_NEAR(hi.z - lo.z, 100.0f, 1.0f);
    EXPECT_GT(hi.y - lo.y, 5.0f) << "a terrain, not a flat sheet";
}

TEST(HostCloud, ColoursFollowTheHeight)
{
    const bench::HostCloud cloud = bench::MakeHostCloud(40'000);
    // The lowest point is water blue, the highest the lightest of all.
    std::size_t lowest = 0;
    std::size_t highest = 0;
    for (std::size_t i = 0; i < cloud.Size(); ++i) {
        if (cloud.xyz[3 * i + 1] < cloud.xyz[3 * lowest + 1])
            lowest = i;
        if (cloud.xyz[3 * i + 1] > cloud.xyz[3 * highest + 1])
            highest = i;
    }
    const auto* low = &cloud.rgb[3 * lowest];
    const auto* high = &cloud.rgb[3 * highest];
    EXPECT_GT(low[2], low[0]);
    EXPECT_GT(low[2], low[1]);
    EXPECT_GT(high[0] + high[1] + high[2], low[0] + low[1] + low[2]);
}

TEST(HostCloud, CameraBoxesMoveSlowlyAndKeepTheCloudInView)
{
    const bench::HostCloud& cloud = bench::HostCloudOf(10'001);
    const glm::vec3 size = cloud.maximum - cloud.minimum;
    glm::vec3 previousMin;
    glm::vec3 previousMax;
    bench::CameraBox(cloud, 0, previousMin, previousMax);
    for (int step = 1; step < 50; ++step) {
        glm::vec3 minimum;
        glm::vec3 maximum;
        bench::CameraBox(cloud, step, minimum, maximum);
        EXPECT_NE(minimum, previousMin) << step;
        EXPECT_LT(glm::length(minimum - previousMin), 0.1f * glm::length(size)) << step;
        EXPECT_LT(glm::length(maximum - previousMax), 0.1f * glm::length(size)) << step;
        previousMin = minimum;
        previousMax = maximum;
    }
}

TEST(BareFloor, FramingShowsTheWholeBoxFillingTheNarrowerSide)
{
    struct Case {
        glm::vec3 minimum, maximum;
        int width, height;
    };
    const std::array<Case, 3> cases{{{{-50, -7, -50}, {50, 7, 50}, 800, 600},
                                     {{-1, -1, -1}, {1, 1, 1}, 600, 800},
                                     {{10, 10, 10}, {10, 10, 10}, 800, 600}}};
    for (const Case& c : cases) {
        const glm::mat4 clip = bench::BareFloor::Framing(c.minimum, c.maximum, c.width, c.height);
        const glm::vec3 centre = 0.5f * (c.minimum + c.maximum);
        const glm::vec4 middle = clip * glm::vec4(centre, 1.0f);
        EXPECT_NEAR(middle.x / middle.w, 0.0f, 1e-4f);
        EXPECT_NEAR(middle.y / middle.w, 0.0f, 1e-4f);
        float widest = 0.0f;
        for (int corner = 0; corner < 8; ++corner) {
            const glm::vec3 p((corner & 1) ? c.maximum.x : c.minimum.x,
                              (corner & 2) ? c.maximum.y : c.minimum.y,
                              (corner & 4) ? c.maximum.z : c.minimum.z);
            const glm::vec4 q = clip * glm::vec4(p, 1.0f);
            ASSERT_GT(q.w, 0.0f);
            EXPECT_LT(std::abs(q.x / q.w), 1.0f);
            EXPECT_LT(std::abs(q.y / q.w), 1.0f);
            EXPECT_LT(std::abs(q.z / q.w), 1.0f) << "between the clipping planes";
            widest = std::max({widest, std::abs(q.x / q.w), std::abs(q.y / q.w)});
        }
        if (c.maximum != c.minimum) {
            EXPECT_GT(widest, 0.5f) << "the box fills the view, not a corner of it";
        }
    }
}

// A colour set as 0..255 values and its length, whether the library keeps floats or bytes.
template <class Set>
std::size_t ColourCount(const Set& set)
{
    if constexpr (requires { set.index(); })
        return std::visit([](const auto& colours) { return colours.size(); }, set);
    else
        return set.size();
}

template <class Set>
std::array<float, 3> ColourBytes(const Set& set, std::size_t i)
{
    if constexpr (requires { set.index(); }) {
        return std::visit([i](const auto& colours) { return ColourBytes(colours, i); }, set);
    } else {
        const auto& c = set[i];
        const float scale = std::is_same_v<std::decay_t<decltype(c)>, tesk::Color3b> ? 1.0f : 255.0f;
        return {c.r * scale, c.g * scale, c.b * scale};
    }
}

class RecordingDriver : public bench::LibraryDriver {
public:
    void AddResource(const std::shared_ptr<vexa::Resource>& resource) override { added.push_back(resource); }
    void RemoveAllResources() override { added.clear(); }
    void Update() override { ++updates; }
    void FrameBox(const glm::vec3&, const glm::vec3&) override {}

    std::vector<std::shared_ptr<vexa::Resource>> added;
    int updates = 0;
};

TEST(HostPath, HandsTheHostsPointsAndColoursOverOnce)
{
    const bench::HostCloud& host = bench::HostCloudOf(10'001);
    RecordingDriver driver;
    const auto resource = bench::HandOver(host, driver);
    ASSERT_EQ(driver.added.size(), 1u);
    EXPECT_EQ(driver.added[0], resource);
    EXPECT_EQ(resource->GetPointCount(), host.Size());
    ASSERT_TRUE(resource->IsColoringAvailable());
    ASSERT_EQ(resource->GetColoringNames().size(), 1u);
    EXPECT_EQ(resource->GetColoringNames()[0], "rgb");
    EXPECT_EQ(resource->GetColoringPreference().source, 2) << "starts coloured by its colours";
    const auto& colours = resource->GetColoringOption(0);
    ASSERT_EQ(ColourCount(colours), host.Size());
    for (std::size_t i : {std::size_t{0}, std::size_t{4'321}, host.Size() - 1}) {
        const std::array<float, 3> bytes = ColourBytes(colours, i);
        for (int k = 0; k < 3; ++k)
            EXPECT_NEAR(bytes[k], host.rgb[3 * i + k], 0.5f) << i << " channel " << k;
    }

    bench::Settle(driver);
    EXPECT_TRUE(driver.added.empty());
    EXPECT_EQ(driver.updates, 3);
    EXPECT_DOUBLE_EQ(bench::Median({}), 0.0);
    EXPECT_DOUBLE_EQ(bench::Median({3.0, 1.0, 2.0}), 2.0);
    EXPECT_DOUBLE_EQ(bench::Median({4.0, 1.0, 3.0, 2.0}), 2.5);
}

// Reads a binary PPM as written by SavePicture.
std::vector<unsigned char> ReadPpm(const std::string& path, int& width, int& height)
{
    std::ifstream in(path, std::ios::binary);
    std::string magic;
    int maximum = 0;
    in >> magic >> width >> height >> maximum;
    in.get();
    std::vector<unsigned char> pixels(static_cast<std::size_t>(width * height * 3));
    in.read(reinterpret_cast<char*>(pixels.data()), static_cast<std::streamsize>(pixels.size()));
    return in && magic == "P6" ? pixels : std::vector<unsigned char>();
}

TEST(BareFloor, DrawsTheHostsCloudInItsColoursOverTheBackground)
{
    if (glfwInit() != GLFW_TRUE)
        GTEST_SKIP() << "no display";
    const std::filesystem::path folder = std::filesystem::temp_directory_path() / "vexa-sidebyside-test";
    std::filesystem::create_directories(folder);
    struct Look {
        int samples;
        float pointSize;
    };
    for (const Look look : {Look{4, 3.0f}, Look{0, 1.0f}}) {
        bench::BareFloor floor;
        bench::FloorLook floorLook;
        floorLook.samples = look.samples;
        floorLook.pointSize = look.pointSize;
        floorLook.background = glm::vec3(1.0f, 0.0f, 1.0f); // a colour the ramp never makes
        ASSERT_TRUE(floor.Open(200, 150, floorLook));
        EXPECT_FALSE(floor.SavePicture(glm::mat4(1.0f), (folder / "empty.ppm").string()))
            << "nothing to draw yet";
        EXPECT_DOUBLE_EQ(floor.Frame(glm::mat4(1.0f)), 0.0);

        const bench::HostCloud& host = bench::HostCloudOf(40'000);
        const glm::mat4 camera = bench::BareFloor::Framing(host.minimum, host.maximum, 200, 150);
        EXPECT_GT(floor.FirstFrame(host, camera), 0.0);
        EXPECT_EQ(floor.GetPointCount(), host.Size());
        EXPECT_GT(floor.Frame(camera), 0.0);
        const std::string path = (folder / "floor.ppm").string();
        ASSERT_TRUE(floor.SavePicture(camera, path));
        int width = 0;
        int height = 0;
        const std::vector<unsigned char> pixels = ReadPpm(path, width, height);
        ASSERT_EQ(width, 200);
        ASSERT_EQ(height, 150);
        ASSERT_FALSE(pixels.empty());
        // The centre shows the terrain; the top corner (above the horizon) the background.
        const auto at = [&](int x, int y) { return &pixels[static_cast<std::size_t>((y * width + x) * 3)]; };
        EXPECT_FALSE(at(100, 75)[0] == 255 && at(100, 75)[2] == 255) << "samples " << look.samples;
        EXPECT_EQ(at(2, 2)[0], 255);
        EXPECT_EQ(at(2, 2)[1], 0);
        EXPECT_EQ(at(2, 2)[2], 255);

        floor.DropCloud();
        EXPECT_EQ(floor.GetPointCount(), 0u);
        floor.Close();
        EXPECT_FALSE(floor.IsOpen());
    }
    std::filesystem::remove_all(folder);
    glfwTerminate();
}

// Runs the side-by-side program with `arguments` and returns its exit status and output.
int RunProgram(const std::string& arguments, std::string& output)
{
    FILE* child = popen(("'" VEXA_SIDEBYSIDE_PROGRAM "' " + arguments + " 2>/dev/null").c_str(), "r");
    if (child == nullptr)
        return -1;
    char buffer[512];
    while (std::fgets(buffer, sizeof(buffer), child) != nullptr)
        output += buffer;
    const int status = pclose(child);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

struct Coverage {
    int left = 1 << 20, top = 1 << 20, right = -1, bottom = -1;
    std::size_t pixels = 0;
};

// Where a picture differs from its background, below the library's top row of buttons.
Coverage CoverageOf(const std::uint8_t* pixels, int width, int height, int channels)
{
    const auto at = [&](int x, int y) {
        return pixels + static_cast<std::size_t>((y * width + x) * channels);
    };
    const std::uint8_t* background = at(width / 2, height - 2);
    Coverage c;
    for (int y = 40; y < height; ++y)
        for (int x = 0; x < width - 40; ++x) {
            const std::uint8_t* p = at(x, y);
            if (std::abs(p[0] - background[0]) + std::abs(p[1] - background[1]) +
                    std::abs(p[2] - background[2]) <
                30)
                continue;
            c.left = std::min(c.left, x);
            c.right = std::max(c.right, x);
            c.top = std::min(c.top, y);
            c.bottom = std::max(c.bottom, y);
            ++c.pixels;
        }
    return c;
}

TEST(SideBySide, BothProgramsShowTheCloudAlike)
{
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / "vexa-sidebyside-pictures-test";
    std::filesystem::remove_all(folder);
    std::string output;
    ASSERT_EQ(RunProgram("--pictures '" + folder.string() + "'", output), 0) << "no display?";

    int width = 0;
    int height = 0;
    const std::vector<unsigned char> floorPixels = ReadPpm((folder / "floor-1M.ppm").string(), width, height);
    ASSERT_FALSE(floorPixels.empty());
    const Coverage floor = CoverageOf(floorPixels.data(), width, height, 3);
    ASSERT_GT(floor.pixels, 10'000u);
    for (const char* name : {"vexa-1M-still.png", "vexa-1M-moving.png"}) {
        const tesk::Image picture = tesk::Image::FromFile((folder / name).string());
        ASSERT_EQ(picture.GetWidth(), static_cast<std::uint32_t>(width)) << name;
        ASSERT_EQ(picture.GetHeight(), static_cast<std::uint32_t>(height)) << name;
        const Coverage library =
            CoverageOf(picture.GetUInt8Data().data(), width, height, picture.GetChannels());
        // The same camera frames the same cloud: the outlines agree within a few pixels (the
        // moving picture's box has drifted a little).
        const int slack = std::string(name).find("moving") != std::string::npos ? 40 : 8;
        EXPECT_NEAR(library.left, floor.left, slack) << name;
        EXPECT_NEAR(library.right, floor.right, slack) << name;
        EXPECT_NEAR(library.top, floor.top, slack) << name;
        EXPECT_NEAR(library.bottom, floor.bottom, slack) << name;
        if (std::string(name).find("still") != std::string::npos) {
            EXPECT_NEAR(static_cast<double>(library.pixels), static_cast<double>(floor.pixels),
                        0.1 * floor.pixels);
        }
    }
    std::filesystem::remove_all(folder);
}

TEST(SideBySide, ResidentChildrenReportAtLeastWhatTheyMustHold)
{
    constexpr std::size_t kPoints = 300'000;
    struct Row {
        const char* kind;
        double leastBytesPerPoint; // host arrays, plus the vertex buffer of positions and colours
    };
    for (const Row row : {Row{"floor", 15.0 + 15.0}, Row{"vexa", 15.0 + 12.0}}) {
        std::string output;
        ASSERT_EQ(RunProgram(std::string("--resident ") + row.kind + " " + std::to_string(kPoints), output),
                  0)
            << row.kind;
        double bytes = -1.0;
        const auto line = output.find("resident_bytes=");
        ASSERT_NE(line, std::string::npos) << output;
        bytes = std::strtod(output.c_str() + line + 15, nullptr);
        EXPECT_GT(bytes / kPoints, row.leastBytesPerPoint) << row.kind;
        EXPECT_LT(bytes / kPoints, 2000.0) << row.kind;
    }
    std::string output;
    EXPECT_EQ(RunProgram("--resident gpu 1000", output), 2) << "an unknown kind is refused";
}

} // namespace
