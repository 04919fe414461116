#pragma once
// The library's own release number. The caption of the default look and the state files
// quote it, so it is defined here once.

#include <vexa/Export.h>

#include <runa/Version.h>

#define VEXA_VERSION_MAJOR 0
#define VEXA_VERSION_MINOR 7
#define VEXA_VERSION_PATCH 0

namespace vexa {

/// The version this library was built as: VEXA_VERSION_MAJOR.MINOR.PATCH.
VEXA_API runa::Version GetLibraryVersion();

} // namespace vexa
