// The reader of the flat generation's record file: whatever the bytes, it ends, it claims no more records
// than they can hold, and a text it gives holds no NUL.

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "fuzz/check.h"
#include "host/manifest_mbdb.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  if (size == 0) return 0;  // a stream of no bytes cannot be opened
  Stream stream(::fmemopen(const_cast<std::uint8_t*>(bytes), size, "rb"));
  if (stream == nullptr) return 0;
  const std::unique_ptr<Manifest> records = ReadRecords(std::move(stream), size);
  if (records == nullptr) return 0;

  constexpr std::size_t kShortestRecord = 50;
  std::size_t whole = 0;
  Entry entry;
  for (Manifest::Next next; (next = records->Read(entry)) != Manifest::Next::End;) {
    if (next != Manifest::Next::Entry) continue;
    ++whole;
    Fuzz::Require((entry.domain + entry.path).find('\0') == std::string::npos, "a text holds no NUL");
    Fuzz::Require(whole * kShortestRecord <= size, "every record has its bytes");
    Fuzz::Require(records->Where().done <= size, "nothing is read past the end");
  }
  Fuzz::Require(records->Read(entry) == Manifest::Next::End, "the end is the end");
  return 0;
}
