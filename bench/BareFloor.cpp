#include "BareFloor.h"

#include "Measure.h"

#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>
#include <GL/glext.h>
#include <GLFW/glfw3.h>

#include <runa/rlog.h>

#include "IgnoredLeaks.h"

#include <glm/ext/matrix_clip_space.hpp>
#include <glm/ext/matrix_transform.hpp>
#include <glm/geometric.hpp>
#include <glm/gtc/type_ptr.hpp>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <fstream>
#include <numbers>
#include <vector>

namespace bench {

/// The floor stands for any bare GL program: what the GL driver keeps of the contexts and
/// programs it made is the driver's, and with its module unloaded at exit no suppression line
/// can name it, so the sanitizer build leaves it out of the report.
using DriverLeaks = testing_support::IgnoredLeaks;

namespace {

constexpr const char* kLabel = "bench::BareFloor";

constexpr const char* kVertexShader = R"(#version 330 core
layout(location = 0) in vec3 position;
layout(location = 1) in vec3 colour;
uniform mat4 clipFromWorld;
uniform float pointSize;
flat out vec3 pointColour;
void main()
{
    gl_Position = clipFromWorld * vec4(position, 1.0);
    gl_PointSize = pointSize;
    pointColour = colour;
}
)";

constexpr const char* kFragmentShader = R"(#version 330 core
flat in vec3 pointColour;
out vec4 fragColour;
void main()
{
    vec2 fromCentre = gl_PointCoord - vec2(0.5);
    if (dot(fromCentre, fromCentre) > 0.25)
        discard;
    fragColour = vec4(pointColour, 1.0);
}
)";

GLuint Compile(GLenum kind, const char* source)
{
    const GLuint shader = glCreateShader(kind);
    glShaderSource(shader, 1, &source, nullptr);
    glCompileShader(shader);
    GLint ok = GL_FALSE;
    glGetShaderiv(shader, GL_COMPILE_STATUS, &ok);
    if (ok != GL_TRUE) {
        char log[1024] = {};
        glGetShaderInfoLog(shader, sizeof(log), nullptr, log);
        rlog::Fail(std::string("The floor's shader does not compile: ") + log, kLabel);
        glDeleteShader(shader);
        return 0;
    }
    return shader;
}

GLuint Link(GLuint vertex, GLuint fragment)
{
    const GLuint program = glCreateProgram();
    glAttachShader(program, vertex);
    glAttachShader(program, fragment);
    glLinkProgram(program);
    glDeleteShader(vertex);
    glDeleteShader(fragment);
    GLint ok = GL_FALSE;
    glGetProgramiv(program, GL_LINK_STATUS, &ok);
    if (ok != GL_TRUE) {
        char log[1024] = {};
        glGetProgramInfoLog(program, sizeof(log), nullptr, log);
        rlog::Fail(std::string("The floor's program does not link: ") + log, kLabel);
        glDeleteProgram(program);
        return 0;
    }
    return program;
}

// Makes the floor's context current for the scope and releases it after, so that the
// library's Update never finds it current.
class CurrentContext {
public:
    explicit CurrentContext(GLFWwindow* window) { glfwMakeContextCurrent(window); }
    ~CurrentContext() { glfwMakeContextCurrent(nullptr); }
    CurrentContext(const CurrentContext&) = delete;
    CurrentContext& operator=(const CurrentContext&) = delete;
};

} // namespace

BareFloor::~BareFloor()
{
    Close();
}

bool BareFloor::Open(int width, int height, const FloorLook& look, int x, int y)
{
    const DriverLeaks driverLeaks;
    Close();
    glfwDefaultWindowHints();
    glfwWindowHint(GLFW_CONTEXT_VERSION_MAJOR, 3);
    glfwWindowHint(GLFW_CONTEXT_VERSION_MINOR, 3);
    glfwWindowHint(GLFW_OPENGL_PROFILE, GLFW_OPENGL_CORE_PROFILE);
    glfwWindowHint(GLFW_OPENGL_FORWARD_COMPAT, GLFW_TRUE);
    glfwWindowHint(GLFW_DEPTH_BITS, 24);
    glfwWindowHint(GLFW_SAMPLES, std::max(look.samples, 0));
    glfwWindowHint(GLFW_RESIZABLE, GLFW_FALSE);
    window_ = glfwCreateWindow(width, height, "bare floor", nullptr, nullptr);
    glfwDefaultWindowHints();
    if (window_ == nullptr) {
        const char* description = nullptr;
        glfwGetError(&description);
        rlog::Fail(std::string("The floor's window could not be opened: ") +
                       (description != nullptr ? description : "no reason given"),
                   kLabel);
        return false;
    }
    glfwSetWindowPos(window_, x, y);
    look_ = look;
    CurrentContext current(window_);
    glfwSwapInterval(0);
    glfwGetFramebufferSize(window_, &width_, &height_);
    glGetIntegerv(GL_SAMPLES, &samples_);

    const GLuint vertex = Compile(GL_VERTEX_SHADER, kVertexShader);
    const GLuint fragment = Compile(GL_FRAGMENT_SHADER, kFragmentShader);
    program_ = vertex != 0 && fragment != 0 ? Link(vertex, fragment) : 0;
    if (program_ == 0) {
        glfwMakeContextCurrent(nullptr);
        Close();
        return false;
    }
    glUseProgram(program_);
    clipFromWorldLocation_ = glGetUniformLocation(program_, "clipFromWorld");
    glUniform1f(glGetUniformLocation(program_, "pointSize"), look.pointSize);
    glGenVertexArrays(1, &vertexArray_);
    glEnable(GL_PROGRAM_POINT_SIZE);
    glEnable(GL_DEPTH_TEST);
    if (samples_ > 0)
        glEnable(GL_MULTISAMPLE);
    glViewport(0, 0, width_, height_);
    glClearColor(look.background.r, look.background.g, look.background.b, 1.0f);
    return true;
}

void BareFloor::Close()
{
    const DriverLeaks driverLeaks;
    if (window_ == nullptr)
        return;
    {
        CurrentContext current(window_);
        if (buffer_ != 0)
            glDeleteBuffers(1, &buffer_);
        if (vertexArray_ != 0)
            glDeleteVertexArrays(1, &vertexArray_);
        if (program_ != 0)
            glDeleteProgram(program_);
    }
    buffer_ = vertexArray_ = program_ = 0;
    pointCount_ = 0;
    glfwDestroyWindow(window_);
    window_ = nullptr;
}

void BareFloor::Draw(const glm::mat4& clipFromWorld)
{
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glUniformMatrix4fv(clipFromWorldLocation_, 1, GL_FALSE, glm::value_ptr(clipFromWorld));
    glDrawArrays(GL_POINTS, 0, static_cast<GLsizei>(pointCount_));
}

double BareFloor::FirstFrame(const HostCloud& cloud, const glm::mat4& clipFromWorld)
{
    const DriverLeaks driverLeaks;
    if (window_ == nullptr)
        return 0.0;
    CurrentContext current(window_);
    const auto start = std::chrono::steady_clock::now();
    if (buffer_ != 0)
        glDeleteBuffers(1, &buffer_);
    const std::size_t count = cloud.Size();
    const auto positionBytes = static_cast<GLsizeiptr>(cloud.xyz.size() * sizeof(float));
    const auto colourBytes = static_cast<GLsizeiptr>(cloud.rgb.size());
    glGenBuffers(1, &buffer_);
    glBindVertexArray(vertexArray_);
    glBindBuffer(GL_ARRAY_BUFFER, buffer_);
    glBufferData(GL_ARRAY_BUFFER, positionBytes + colourBytes, nullptr, GL_STATIC_DRAW);
    glBufferSubData(GL_ARRAY_BUFFER, 0, positionBytes, cloud.xyz.data());
    glBufferSubData(GL_ARRAY_BUFFER, positionBytes, colourBytes, cloud.rgb.data());
    glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, 3 * sizeof(float), nullptr);
    glVertexAttribPointer(1, 3, GL_UNSIGNED_BYTE, GL_TRUE, 3, reinterpret_cast<const void*>(positionBytes));
    glEnableVertexAttribArray(0);
    glEnableVertexAttribArray(1);
    pointCount_ = count;
    Draw(clipFromWorld);
    glfwSwapBuffers(window_);
    glFinish();
    return Seconds(std::chrono::steady_clock::now() - start);
}

double BareFloor::Frame(const glm::mat4& clipFromWorld)
{
    const DriverLeaks driverLeaks;
    if (window_ == nullptr || pointCount_ == 0)
        return 0.0;
    CurrentContext current(window_);
    const auto start = std::chrono::steady_clock::now();
    Draw(clipFromWorld);
    glfwSwapBuffers(window_);
    glFinish();
    return Seconds(std::chrono::steady_clock::now() - start);
}

void BareFloor::DropCloud()
{
    const DriverLeaks driverLeaks;
    if (window_ == nullptr || buffer_ == 0)
        return;
    CurrentContext current(window_);
    glDeleteBuffers(1, &buffer_);
    buffer_ = 0;
    pointCount_ = 0;
    glFinish();
}

bool BareFloor::SavePicture(const glm::mat4& clipFromWorld, const std::string& path)
{
    const DriverLeaks driverLeaks;
    if (window_ == nullptr || pointCount_ == 0) {
        rlog::Fail("The floor has no cloud to draw into \"" + path + "\"", kLabel);
        return false;
    }
    std::vector<unsigned char> pixels(static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_) *
                                      3);
    {
        CurrentContext current(window_);
        Draw(clipFromWorld);
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        glReadBuffer(GL_BACK);
        glReadPixels(0, 0, width_, height_, GL_RGB, GL_UNSIGNED_BYTE, pixels.data());
        glfwSwapBuffers(window_);
    }
    std::ofstream out(path, std::ios::binary);
    out << "P6\n" << width_ << " " << height_ << "\n255\n";
    const std::size_t rowBytes = static_cast<std::size_t>(width_) * 3;
    for (int row = height_ - 1; row >= 0; --row)
        out.write(reinterpret_cast<const char*>(pixels.data() + static_cast<std::size_t>(row) * rowBytes),
                  static_cast<std::streamsize>(rowBytes));
    if (!out) {
        rlog::Fail("The floor's picture could not be written to \"" + path + "\"", kLabel);
        return false;
    }
    return true;
}

glm::mat4 BareFloor::Framing(const glm::vec3& minimum, const glm::vec3& maximum, int width, int height)
{
    constexpr float kFovY = std::numbers::pi_v<float> / 4.0f;
    constexpr float kMargin = 1.1f;
    const float widthPerHeight =
        static_cast<float>(std::max(width, 1)) / static_cast<float>(std::max(height, 1));
    const float fovX = 2.0f * std::atan(std::tan(0.5f * kFovY) * widthPerHeight);
    const glm::vec3 centre = 0.5f * (minimum + maximum);
    const float radius = std::max(0.5f * glm::length(maximum - minimum), 1e-3f);
    const float distance = kMargin * radius / std::sin(0.5f * std::min(kFovY, fovX));
    const glm::vec3 forward = glm::normalize(glm::vec3(-1.0f));
    const glm::mat4 view = glm::lookAt(centre - distance * forward, centre, glm::vec3(0.0f, 1.0f, 0.0f));
    const glm::mat4 projection =
        glm::perspective(kFovY, widthPerHeight, 0.01f * distance, 2.0f * (distance + radius));
    return projection * view;
}

} // namespace bench
