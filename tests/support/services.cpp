#include "support/services.h"

#include "basic/services.h"

namespace {

// Counts only calls of a replacement, so that threads that call the stand-in share nothing.
template <typename Service>
Service* Ask(Service* standard) {
  if (service_in_place<Service> == nullptr) return standard;
  ++accessor_calls<Service>;
  return service_in_place<Service>;
}

}  // namespace

IBasUtilityFile* BasUtilityFile() {
  return Ask(Basic::FileService());
}

IBasUtilityString* BasUtilityString() {
  return Ask(Basic::StringService());
}

IBasUtilitySys* BasUtilitySys() {
  return Ask(Basic::SysService());
}
