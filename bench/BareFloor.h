#pragma once
// The least a program can do to show a host's cloud: one GLFW window, one vertex buffer, one
// tiny shader program and raw GL 3.3 calls. It uses nothing of the library's, so what it
// costs is the floor the library's frames are compared with.
//
// GLFW must be initialised before Open (in the side-by-side program the library does it, and
// only the library terminates it). Every call makes the floor's context current and releases
// it again, so the library finds no foreign context current when it draws.

#include "HostCloud.h"

#include <glm/mat4x4.hpp>
#include <glm/vec3.hpp>

#include <cstddef>
#include <string>

struct GLFWwindow;

namespace bench {

struct FloorLook {
    /// Multisamples of the window's framebuffer: 4 for the MSAA 4x look, 0 for anti-aliasing off.
    int samples = 4;
    /// Diameter of the round points in pixels.
    float pointSize = 3.0f;
    glm::vec3 background{0.0f};
};

class BareFloor {
public:
    BareFloor() = default;
    ~BareFloor();
    BareFloor(const BareFloor&) = delete;
    BareFloor& operator=(const BareFloor&) = delete;

    /// Opens the window at (x, y) and builds the program; false (logged) when either fails.
    bool Open(int width, int height, const FloorLook& look, int x = 0, int y = 0);
    /// Destroys the window and its GL objects; in the side-by-side program, before the
    /// library terminates GLFW.
    void Close();
    bool IsOpen() const { return window_ != nullptr; }
    /// The samples the framebuffer really got (a driver may give fewer than asked for).
    int GetSamples() const { return samples_; }
    /// Points in the vertex buffer; 0 before the first frame and after DropCloud.
    std::size_t GetPointCount() const { return pointCount_; }

    /// Creates the vertex buffer from the host's arrays, draws it, swaps and waits until the
    /// picture is finished: a first frame. Returns its wall time in seconds.
    double FirstFrame(const HostCloud& cloud, const glm::mat4& clipFromWorld);
    /// One frame of the buffer already uploaded, in seconds; 0 when there is none.
    double Frame(const glm::mat4& clipFromWorld);
    /// Deletes the vertex buffer.
    void DropCloud();
    /// Draws a frame and writes it to `path` as a binary PPM, top row first; false (logged)
    /// when there is nothing to draw or the file cannot be written.
    bool SavePicture(const glm::mat4& clipFromWorld, const std::string& path);

    /// The camera the library's FrameBox would set up for the box in a window of this size, from
    /// its start direction (looking along -1, -1, -1 with y up, 45 degrees vertical field of
    /// view): both programs then show the cloud alike.
    static glm::mat4 Framing(const glm::vec3& minimum, const glm::vec3& maximum, int width, int height);

private:
    void Draw(const glm::mat4& clipFromWorld);

    GLFWwindow* window_ = nullptr;
    FloorLook look_;
    int samples_ = 0;
    int width_ = 0;
    int height_ = 0;
    unsigned program_ = 0;
    unsigned vertexArray_ = 0;
    unsigned buffer_ = 0;
    int clipFromWorldLocation_ = -1;
    std::size_t pointCount_ = 0;
};

} // namespace bench
