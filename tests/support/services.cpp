#include "support/services.h"

#include "basic/services.h"

namespace {

// Only an override counts, so that calls from several threads on the stand-in touch nothing shared.
template <typename Service>
Service* Ask(Service* standard) {
  ServiceSlot<Service>& slot = service_slot<Service>;
  if (slot.service == nullptr) return standard;
  ++slot.accessor_calls;
  return slot.service;
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
