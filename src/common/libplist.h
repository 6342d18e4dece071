// Internal. One spelling for what libplist releases name differently. CMake defines the HOSTUTIL_PLIST_HAS_
// macros by what the installed release declares.

#pragma once

#include <plist/plist.h>

#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>

#include "common/owners.h"

namespace Libplist {

// plist_t is a pointer to void, so an owner of a node is an owner of void.
using Node = Owners::Owner<std::remove_pointer_t<plist_t>, plist_free>;

// Releases what libplist allocated for its caller, for example the text from plist_to_xml.
inline void FreeMemory(void* memory) {
#ifdef HOSTUTIL_PLIST_HAS_MEM_FREE  // 2.3.0
  plist_mem_free(memory);
#else
  plist_to_xml_free(static_cast<char*>(memory));
#endif
}

using Text = Owners::Owner<char, FreeMemory>;

// The tree, or null. `parser` is plist_from_bin or plist_from_xml, which return an error code since 2.3.0.
template <typename Parser>
plist_t Parse(Parser* parser, const char* bytes, std::uint32_t length) {
  plist_t root = nullptr;
  if constexpr (std::is_void_v<decltype(parser(bytes, length, &root))>) {
    parser(bytes, length, &root);
  } else if (parser(bytes, length, &root) != decltype(parser(bytes, length, &root)){}) {
    plist_free(root);
    root = nullptr;
  }
  return root;
}

// The tree as plist_to_xml, or plist_to_bin, encodes it; empty for null and when that fails.
inline std::string Encoded(plist_t root, decltype(&plist_to_xml) encode = &plist_to_xml) {
  char* bytes = nullptr;
  std::uint32_t length = 0;
  if (root != nullptr) encode(root, &bytes, &length);
  const Text owner(bytes);
  return {bytes, length};
}

// Whether a binary list may contain null. Since 2.3.0, as plist_mem_free.
#ifdef HOSTUTIL_PLIST_HAS_MEM_FREE
inline constexpr bool kReadsNull = true;
#else
inline constexpr bool kReadsNull = false;
#endif

// Dates, in seconds since 1970.
#ifdef HOSTUTIL_PLIST_HAS_UNIX_DATE  // 2.7.0
inline plist_t NewDate(std::int64_t time) {
  return plist_new_unix_date(time);
}

inline std::int64_t DateOf(plist_t node) {
  std::int64_t time = 0;
  plist_get_unix_date_val(node, &time);
  return time;
}
#else
inline constexpr std::int64_t kFrom1970To2001 = 978'307'200;

// Outside the 68 years around 2001 that earlier releases can store, another date.
inline plist_t NewDate(std::int64_t time) {
  return plist_new_date(static_cast<std::int32_t>(time - kFrom1970To2001), 0);
}

inline std::int64_t DateOf(plist_t node) {
  std::int32_t seconds = 0;
  std::int32_t microseconds = 0;
  plist_get_date_val(node, &seconds, &microseconds);
  return seconds + kFrom1970To2001;
}
#endif

}  // namespace Libplist
