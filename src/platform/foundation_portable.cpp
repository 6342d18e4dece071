// Foundation for machines without it: string objects over std::string, identifiers from libuuid, and
// autorelease pools with the ownership of the object runtime.

#include <uuid/uuid.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/autorelease_pool.h"
#include "platform/foundation.h"

namespace Foundation {

class String {
 public:
  explicit String(const char* text) : text_(text) {}
  String(const std::string& text, std::size_t length) : text_(text, 0, length) {}
  const std::string& Text() const { return text_; }

 private:
  std::string text_;
};

class Uuid {
 public:
  Uuid() { uuid_generate(bytes_); }
  const uuid_t& Bytes() const { return bytes_; }

 private:
  uuid_t bytes_;
};

namespace {

// The objects of all of a thread's pools, the innermost pool's last; a pool is the place in this stack at
// which it began. What was handed over outside any pool stays at the bottom until the thread ends.
using PoolStack = std::vector<std::unique_ptr<String>>;
thread_local PoolStack pool_stack;

void DrainTo(std::size_t size) {
  while (pool_stack.size() > size) pool_stack.pop_back();
}

// The number of bytes of the well-formed UTF-8 sequence at `text`, 0 when it is none.
std::size_t SequenceLength(const unsigned char* text) {
  const auto continues = [text](std::size_t at) { return (text[at] & 0xC0) == 0x80; };
  const unsigned char lead = text[0];
  if (lead < 0x80) return 1;
  if (lead < 0xC2 || lead > 0xF4 || !continues(1)) return 0;
  if (lead < 0xE0) return 2;
  if (lead < 0xF0) {
    const bool overlong = lead == 0xE0 && text[1] < 0xA0;
    const bool surrogate = lead == 0xED && text[1] >= 0xA0;
    return !overlong && !surrogate && continues(2) ? 3 : 0;
  }
  const bool overlong = lead == 0xF0 && text[1] < 0x90;
  const bool too_large = lead == 0xF4 && text[1] >= 0x90;
  return !overlong && !too_large && continues(2) && continues(3) ? 4 : 0;
}

bool IsValidUtf8(const char* text) {
  for (auto* at = reinterpret_cast<const unsigned char*>(text); *at != 0;) {
    const std::size_t length = SequenceLength(at);
    if (length == 0) return false;
    at += length;
  }
  return true;
}

}  // namespace

String* StringWithUtf8(const char* text) {
  return IsValidUtf8(text) ? Autorelease(new String(text)) : nullptr;
}

std::size_t LastRangeOf(String* text, String* wanted) {
  static_assert(kNotFound == std::string::npos);
  return text->Text().rfind(wanted->Text());
}

String* LeadingSubstring(String* text, std::size_t length) {
  return Autorelease(new String(text->Text(), length));
}

const char* Utf8(String* text) {
  return text->Text().c_str();
}

Uuid* CreateUuid() {
  return new Uuid;
}

String* CreateUuidString(Uuid* uuid) {
  char text[UUID_STR_LEN];
  uuid_unparse_upper(uuid->Bytes(), text);
  return new String(text);
}

void Release(Uuid* uuid) {
  delete uuid;
}

String* Autorelease(String* text) {
  return pool_stack.emplace_back(std::unique_ptr<String>(text)).get();
}

}  // namespace Foundation

AutoreleasePool::AutoreleasePool() : pool_(Foundation::pool_stack.size()) {
}

AutoreleasePool::~AutoreleasePool() {
  Foundation::DrainTo(pool_);
}
