#include <nettle/sha1.h>

#include <cstdlib>
#include <cstring>
#include <new>

#include "basic/services.h"

namespace {

class StringService final : public IBasUtilityString {
 public:
  void FreeString(char* text) override { std::free(text); }

  // SHA-1 as 40 lower-case hexadecimal digits: the names of the files in a device backup.
  char* DigestString(const char* text) override {
    sha1_ctx context;
    sha1_init(&context);
    sha1_update(&context, std::strlen(text), reinterpret_cast<const std::uint8_t*>(text));
    std::uint8_t digest[SHA1_DIGEST_SIZE];
    sha1_digest(&context, sizeof digest, digest);

    auto* hexadecimal = static_cast<char*>(std::malloc(2 * sizeof digest + 1));
    if (hexadecimal == nullptr) throw std::bad_alloc();
    char* write = hexadecimal;
    for (const unsigned byte : digest) {
      *write++ = "0123456789abcdef"[byte >> 4];
      *write++ = "0123456789abcdef"[byte & 0xF];
    }
    *write = '\0';
    return hexadecimal;
  }
};

constinit StringService service;

}  // namespace

IBasUtilityString* Basic::StringService() {
  return &service;
}
