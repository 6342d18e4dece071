// How an entry's kind and time are shown.

#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "manifest.h"

inline std::string_view NameOf(EntryKind kind) {
  constexpr std::array<std::string_view, 3> kNames = {"file", "directory", "link"};
  return kNames.at(static_cast<std::size_t>(kind));
}

// Utils::ConvertUtcToLocalDate, remembering what each thread has asked. Empty when the time is not recorded
// or has no date. REQUIRES: the time zone does not change.
std::string DateOf(const std::optional<long>& modified);
