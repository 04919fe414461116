#pragma once
// Bookkeeping shared by the window and the GL helpers of this library.

#include <string>

namespace plor::detail {

/// True when some OpenGL context is current on this thread. Everything that would call GL
/// checks this first: a GL call without a context is undefined behaviour in most drivers.
bool HasCurrentContext();

/// "GL_INVALID_ENUM" and the like for a glGetError code.
std::string GlErrorName(unsigned int error);

/// Forgets the deletions waiting for a context, once no context that owned them is left.
void DiscardDeferredGlDeletes();

} // namespace plor::detail
