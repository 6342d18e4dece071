#include "basic/services.h"

IBasUtilityFile* BasUtilityFile() {
  return Basic::FileService();
}

IBasUtilityString* BasUtilityString() {
  return Basic::StringService();
}

IBasUtilitySys* BasUtilitySys() {
  return Basic::SysService();
}
