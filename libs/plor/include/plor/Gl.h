#pragma once
// OpenGL queries and the function loader. Drawing code includes <glbinding/gl/gl.h> itself;
// this header stays free of GL headers.

#include <runa/Version.h>

#include <string>

namespace plor {

/// Resolves the OpenGL entry points for the context current on this thread. Cheap after
/// the first call for a context; Window::MakeContextCurrent calls it.
void InitializeGlFunctions();

/// Drains the GL error queue; "" when there was no error, otherwise the names of the errors
/// ("GL_INVALID_ENUM", several joined by ", ").
std::string GetLastGlError();

std::string GetGlVendor();
std::string GetGlRenderer();
/// The driver's full version string ("4.5 (Core Profile) Mesa 22.3.6").
std::string GetGlVersionString();
/// The context's OpenGL version as major.minor.0.
runa::Version GetGlVersion();

/// Deletes GL objects now when a context is current, otherwise at the next
/// MakeContextCurrent: renderers may be destroyed between frames, when no context is.
enum class GlObjectKind { Buffer, VertexArray, Texture, Framebuffer, Renderbuffer, Program };
void DeleteGlObject(GlObjectKind kind, unsigned int id);
/// Runs the deletions that waited for a context. Needs a current context.
void FlushDeferredGlDeletes();
/// Number of deletions still waiting for a context.
std::size_t PendingGlDeletes();

} // namespace plor
