// The data that the comparisons work on: the same in every run.

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

inline constexpr std::size_t kKiB = 1024;
inline constexpr std::size_t kMiB = 1024 * kKiB;

// Keeps a text until the program ends.
const std::string& Kept(std::string text);

// `size` bytes of any value but NUL.
std::string RandomBytes(std::size_t size);

// `size` bytes that read like English: its letters, word lengths and punctuation.
std::string EnglishText(std::size_t size);

// `piece` over and over, `size` bytes of it.
std::string Repeated(std::string_view piece, std::size_t size);

// "64 B", "100 KiB", "8 MiB".
std::string SizeName(std::size_t size);
