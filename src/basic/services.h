// Internal. The stand-in's three services, for its accessors and for tests that wrap them.

#pragma once

#include "common/basic/basic_services.h"

namespace Basic {

IBasUtilityFile* FileService();
IBasUtilityString* StringService();
IBasUtilitySys* SysService();

}  // namespace Basic
