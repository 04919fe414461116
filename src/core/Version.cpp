#include <vexa/Version.h>

namespace vexa {

runa::Version GetLibraryVersion()
{
    return runa::Version{VEXA_VERSION_MAJOR, VEXA_VERSION_MINOR, VEXA_VERSION_PATCH};
}

} // namespace vexa
