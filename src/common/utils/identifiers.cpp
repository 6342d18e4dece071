#include "common/utils/identifiers.h"

#include <algorithm>
#include <cctype>

#include "common/owners.h"
#include "platform/foundation.h"

std::string Utils::GenerateLowerUuid() {
  const Owners::Owner<Foundation::Uuid, Foundation::Release> uuid(Foundation::CreateUuid());
  Foundation::String* const text = Foundation::CreateUuidString(uuid.get());
  std::string id = Foundation::Utf8(Foundation::Autorelease(text));
  std::transform(id.begin(), id.end(), id.begin(),
                 [](unsigned char character) { return static_cast<char>(std::tolower(character)); });
  return id;
}
