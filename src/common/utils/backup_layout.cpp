#include "common/utils/backup_layout.h"

#include <string_view>

#include "common/basic/basic_services.h"
#include "common/text_or_empty.h"

std::string Utils::CalcFileID(const char* first, const char* second) {
  const std::string_view head = TextOrEmpty(first);
  const std::string_view tail = TextOrEmpty(second);
  std::string joined;
  joined.reserve(head.size() + 1 + tail.size());
  joined.append(head).append(1, '-').append(tail);

  // No owner type frees the digest: FreeString may throw, which a destructor cannot pass on.
  char* const digest = BasUtilityString()->DigestString(joined.c_str());
  std::string id;
  try {
    id = digest;
  } catch (...) {
    BasUtilityString()->FreeString(digest);
    throw;
  }
  BasUtilityString()->FreeString(digest);
  return id;
}

std::string Utils::ConcatBackupFilePath(const char* root, const char* file_id, bool two_level, bool create) {
  const std::string_view start = TextOrEmpty(root);
  const std::string_view id = TextOrEmpty(file_id);
  std::string path;
  path.reserve(start.size() + 3 + id.size());  // at most
  path = start;
  if (two_level) path.append(id.substr(0, 2)).append(1, '/');
  const std::size_t slash = path.size() - 1;
  path += id;
  if (two_level && create) {
    // The folder is the path cut at the slash. The caller's texts, which the service may change, are not read
    // again.
    path[slash] = '\0';
    BasUtilityFile()->CreateDirectory(path.c_str());
    path[slash] = '/';
  }
  return path;
}
