// A text that the library hands over, as a string.

#pragma once

#include <cstdlib>
#include <memory>
#include <new>
#include <string>

// Takes the block over and frees it. The library gives null where there is no memory.
inline std::string Taken(char* text) {
  const std::unique_ptr<char, decltype(&std::free)> block(text, &std::free);
  if (block == nullptr) throw std::bad_alloc();
  return block.get();
}
