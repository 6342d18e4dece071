#include "support/services.h"

#include "basic/services.h"

namespace {

ServiceSlot<IBasUtilityFile> file_slot;
ServiceSlot<IBasUtilityString> string_slot;
ServiceSlot<IBasUtilitySys> sys_slot;

// Only an override counts, so that calls from several threads on the stand-in touch nothing shared.
template <typename Service>
Service* Ask(ServiceSlot<Service>& slot, Service* standard) {
  if (slot.service == nullptr) return standard;
  ++slot.accessor_calls;
  return slot.service;
}

}  // namespace

ServiceSlot<IBasUtilityFile>& SlotOf(IBasUtilityFile* /*type*/) {
  return file_slot;
}

ServiceSlot<IBasUtilityString>& SlotOf(IBasUtilityString* /*type*/) {
  return string_slot;
}

ServiceSlot<IBasUtilitySys>& SlotOf(IBasUtilitySys* /*type*/) {
  return sys_slot;
}

IBasUtilityFile* BasUtilityFile() {
  return Ask(file_slot, Basic::FileService());
}

IBasUtilityString* BasUtilityString() {
  return Ask(string_slot, Basic::StringService());
}

IBasUtilitySys* BasUtilitySys() {
  return Ask(sys_slot, Basic::SysService());
}
