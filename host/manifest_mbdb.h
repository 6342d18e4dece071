// The record file of the flat generation, read from a stream.

#pragma once

#include <cstdint>
#include <memory>

#include "manifest.h"

// The length of a text that is missing.
inline constexpr std::uint16_t kNoText = 0xFFFF;

// A reader of the records in `stream`, which holds `size` bytes; null when it does not begin as a record file
// does. Records are read one at a time: memory is bounded by the longest one.
std::unique_ptr<Manifest> ReadRecords(Stream stream, std::uint64_t size);
