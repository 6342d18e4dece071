#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iostream>

#include "backup_files.h"
#include "commands.h"
#include "common/plist_util.h"
#include "output.h"

namespace {

// The library gives one answer for every file that it cannot read; people want to know more.
std::string WhyUnreadable(const std::string& file) {
  struct stat status {};
  if (::stat(file.c_str(), &status) != 0) return std::strerror(errno);
  if (S_ISDIR(status.st_mode)) return "is a folder";
  if (!S_ISREG(status.st_mode)) return "is not a regular file";
  if (status.st_size == 0) return "is empty";
  if (Stream(std::fopen(file.c_str(), "rb")) == nullptr) return std::strerror(errno);
  return "is no property list";
}

}  // namespace

ExitStatus RunPlist(const PlistOptions& options) {
  const Plist plist(PlistUtil::ReadPlist(options.file.c_str()));
  if (plist == nullptr) throw Failure(options.file + ": " + WhyUnreadable(options.file));
  errno = 0;
  PlistUtil::PrintPlist(plist.get());
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0 || !std::cout) throw OutputFailure{errno};
  return ExitStatus::Fine;
}
