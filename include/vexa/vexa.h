#pragma once
// The whole exported interface of VEXA.

#include <vexa/Export.h>
#include <vexa/ResourceId.h>

#include <runa/BasisDefinition.h>
#include <runa/SpaceDefinition.h>
#include <runa/Version.h>
#include <runa/rlog.h>
