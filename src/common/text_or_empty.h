// Internal. Null texts count as empty ones.

#pragma once

inline const char* TextOrEmpty(const char* text) {
  return text != nullptr ? text : "";
}
