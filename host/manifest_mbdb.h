// The record file of the flat generation, read from a stream.

#pragma once

#include <cstdint>
#include <memory>

#include "manifest.h"
#include "owners.h"

// The length field of a missing text.
inline constexpr std::uint16_t kNoText = 0xFFFF;

// A reader of the records in `stream`, which holds `size` bytes; null without the magic number. Memory is
// bounded by the longest text.
std::unique_ptr<Manifest> ReadRecords(Stream stream, std::uint64_t size);
