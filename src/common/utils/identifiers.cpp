#include "common/utils/identifiers.h"

#include <algorithm>
#include <cctype>
#include <memory>

#include "platform/foundation.h"

namespace {

struct ReleaseUuid {
  void operator()(Foundation::Uuid* uuid) const { Foundation::Release(uuid); }
};

}  // namespace

std::string Utils::GenerateLowerUuid() {
  std::unique_ptr<Foundation::Uuid, ReleaseUuid> uuid(Foundation::CreateUuid());
  Foundation::String* const text = Foundation::CreateUuidString(uuid.get());
  uuid.reset();
  std::string id = Foundation::Utf8(Foundation::Autorelease(text));
  std::transform(id.begin(), id.end(), id.begin(),
                 [](unsigned char character) { return static_cast<char>(std::tolower(character)); });
  return id;
}
