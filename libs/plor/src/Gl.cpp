#include <plor/Gl.h>

#include "GlContext.h"

#include <runa/rlog.h>

#include <glbinding/Binding.h>
#include <glbinding/gl/gl.h>

// GLFW must not pull in the system GL header: glbinding declares the GL names itself.
#define GLFW_INCLUDE_NONE
#include <GLFW/glfw3.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <utility>
#include <vector>

using namespace gl;

namespace plor {

namespace {

// glbinding keeps entry points per context handle; the GLFW window pointer serves as the
// handle, so no platform query is needed to tell contexts apart. Handles are never released:
// a new window at a recycled address reuses the entry points, which are the same per driver.
std::vector<glbinding::ContextHandle> knownContexts;
thread_local glbinding::ContextHandle boundContext = 0;

std::vector<std::pair<GlObjectKind, unsigned int>> deferredDeletes;

std::string ErrorName(GLenum error)
{
    switch (error) {
    case GL_INVALID_ENUM:
        return "GL_INVALID_ENUM";
    case GL_INVALID_VALUE:
        return "GL_INVALID_VALUE";
    case GL_INVALID_OPERATION:
        return "GL_INVALID_OPERATION";
    case GL_STACK_OVERFLOW:
        return "GL_STACK_OVERFLOW";
    case GL_STACK_UNDERFLOW:
        return "GL_STACK_UNDERFLOW";
    case GL_OUT_OF_MEMORY:
        return "GL_OUT_OF_MEMORY";
    case GL_INVALID_FRAMEBUFFER_OPERATION:
        return "GL_INVALID_FRAMEBUFFER_OPERATION";
    case GL_CONTEXT_LOST:
        return "GL_CONTEXT_LOST";
    default: {
        char text[32];
        std::snprintf(text, sizeof(text), "GL error 0x%04X", static_cast<unsigned int>(error));
        return text;
    }
    }
}

std::string GetString(GLenum name)
{
    if (!detail::HasCurrentContext())
        return {};
    const GLubyte* text = glGetString(name);
    return text ? std::string(reinterpret_cast<const char*>(text)) : std::string();
}

void DeleteNow(GlObjectKind kind, GLuint id)
{
    switch (kind) {
    case GlObjectKind::Buffer:
        glDeleteBuffers(1, &id);
        break;
    case GlObjectKind::VertexArray:
        glDeleteVertexArrays(1, &id);
        break;
    case GlObjectKind::Texture:
        glDeleteTextures(1, &id);
        break;
    case GlObjectKind::Framebuffer:
        glDeleteFramebuffers(1, &id);
        break;
    case GlObjectKind::Renderbuffer:
        glDeleteRenderbuffers(1, &id);
        break;
    case GlObjectKind::Program:
        glDeleteProgram(id);
        break;
    }
}

} // namespace

namespace detail {

bool HasCurrentContext()
{
    return glfwGetCurrentContext() != nullptr;
}

std::string GlErrorName(unsigned int error)
{
    return ErrorName(static_cast<GLenum>(error));
}

void DiscardDeferredGlDeletes()
{
    deferredDeletes.clear();
}

} // namespace detail

void InitializeGlFunctions()
{
    GLFWwindow* current = glfwGetCurrentContext();
    if (!current) {
        rlog::Warn("No OpenGL context is current", "plor::InitializeGlFunctions");
        return;
    }
    const auto handle = static_cast<glbinding::ContextHandle>(reinterpret_cast<std::intptr_t>(current));
    if (handle == boundContext)
        return;
    if (std::find(knownContexts.begin(), knownContexts.end(), handle) == knownContexts.end()) {
        glbinding::Binding::initialize(handle, true, true);
        knownContexts.push_back(handle);
    } else {
        glbinding::Binding::useContext(handle);
    }
    boundContext = handle;
}

std::string GetLastGlError()
{
    if (!detail::HasCurrentContext())
        return {};
    std::string errors;
    // A lost context may report errors forever; a bounded loop still drains everything real.
    for (int i = 0; i < 32; ++i) {
        const GLenum error = glGetError();
        if (error == GL_NO_ERROR)
            break;
        if (!errors.empty())
            errors += ", ";
        errors += ErrorName(error);
    }
    return errors;
}

std::string GetGlVendor()
{
    return GetString(GL_VENDOR);
}

std::string GetGlRenderer()
{
    return GetString(GL_RENDERER);
}

std::string GetGlVersionString()
{
    return GetString(GL_VERSION);
}

runa::Version GetGlVersion()
{
    if (!detail::HasCurrentContext())
        return {};
    GLint major = 0;
    GLint minor = 0;
    glGetIntegerv(GL_MAJOR_VERSION, &major);
    glGetIntegerv(GL_MINOR_VERSION, &minor);
    runa::Version version;
    version.major = static_cast<std::uint32_t>(std::max(major, 0));
    version.minor = static_cast<std::uint32_t>(std::max(minor, 0));
    return version;
}

void DeleteGlObject(GlObjectKind kind, unsigned int id)
{
    if (id == 0)
        return;
    if (detail::HasCurrentContext()) {
        DeleteNow(kind, id);
        return;
    }
    deferredDeletes.emplace_back(kind, id);
}

void FlushDeferredGlDeletes()
{
    if (deferredDeletes.empty())
        return;
    if (!detail::HasCurrentContext()) {
        rlog::Warn("No OpenGL context is current", "plor::FlushDeferredGlDeletes");
        return;
    }
    for (const auto& [kind, id] : deferredDeletes)
        DeleteNow(kind, id);
    deferredDeletes.clear();
}

std::size_t PendingGlDeletes()
{
    return deferredDeletes.size();
}

} // namespace plor
