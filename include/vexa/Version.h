#pragma once
// The library's own release number (VEXA_VERSION_MAJOR, _MINOR, _PATCH and _TEXT come from
// the project's version through the generated <vexa/Config.h>).

#include <vexa/Config.h>
#include <vexa/Export.h>

#include <runa/Version.h>

namespace vexa {

/// The version this library was built as: VEXA_VERSION_MAJOR.MINOR.PATCH.
VEXA_API runa::Version GetLibraryVersion();

} // namespace vexa
