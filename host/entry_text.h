// How an entry's kind and time are shown.

#pragma once

#include <array>
#include <string>
#include <string_view>

#include "common/utils.h"
#include "manifest.h"

inline std::string_view NameOf(EntryKind kind) {
  constexpr std::array<std::string_view, 3> kNames = {"file", "directory", "link"};
  return kNames.at(static_cast<std::size_t>(kind));
}

// Empty when the time is not recorded or has no date.
inline std::string DateOf(const std::optional<long>& modified) {
  return modified ? Utils::ConvertUtcToLocalDate(*modified) : std::string();
}
