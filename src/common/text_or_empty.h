// Internal. How the library reads a text that must not be null but is.

#pragma once

inline const char* TextOrEmpty(const char* text) {
  return text != nullptr ? text : "";
}
