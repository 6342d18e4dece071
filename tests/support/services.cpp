#include "support/services.h"

#include "basic/services.h"

namespace {

// Only an override counts, so that calls from several threads on the stand-in touch nothing shared.
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
