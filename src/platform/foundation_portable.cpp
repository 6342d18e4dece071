// Foundation for machines without it: string objects over std::string, identifiers from libuuid, and
// autorelease pools with the ownership of the object runtime.

#include <uuid/uuid.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/autorelease_pool.h"
#include "platform/foundation.h"
#include "platform/utf8.h"

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

bool IsValidUtf8(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = Utf8::SequenceLength(text);
    if (length == 0) return false;
    text.remove_prefix(length);
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
