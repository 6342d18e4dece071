#include "common/utils/backup_layout.h"

#include "common/basic/basic_services.h"
#include "common/text_or_empty.h"

std::string Utils::CalcFileID(const char* first, const char* second) {
  std::string joined = TextOrEmpty(first);
  joined += '-';
  joined += TextOrEmpty(second);

  // Freed by hand on both ways out: a service may throw, which no destructor could pass on.
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
  const std::string id = TextOrEmpty(file_id);
  std::string path = TextOrEmpty(root);
  if (two_level) {
    path.append(id, 0, 2);
    if (create) BasUtilityFile()->CreateDirectory(path.c_str());
    path += '/';
  }
  path += id;
  return path;
}
