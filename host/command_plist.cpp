#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iostream>

#include "command.h"
#include "common/plist_util.h"
#include "output.h"
#include "owners.h"

namespace {

struct Options {
  std::string file;
};

// ReadPlist returns null without a reason.
std::string WhyUnreadable(const std::string& file) {
  struct stat status {};
  if (::stat(file.c_str(), &status) != 0) return std::strerror(errno);
  if (S_ISDIR(status.st_mode)) return "is a folder";
  if (!S_ISREG(status.st_mode)) return "is not a regular file";
  if (status.st_size == 0) return "is empty";
  if (Stream(std::fopen(file.c_str(), "rb")) == nullptr) return std::strerror(errno);
  return "is not a property list";
}

ExitStatus Run(const Options& options) {
  const Plist plist(PlistUtil::ReadPlist(options.file.c_str()));
  if (plist == nullptr) throw Failure(options.file + ": " + WhyUnreadable(options.file));
  errno = 0;
  PlistUtil::PrintPlist(plist.get());
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0 || !std::cout) throw OutputFailure{errno};
  return ExitStatus::Fine;
}

}  // namespace

void AddPlist(CLI::App& app, ExitStatus& status) {
  const auto options = std::make_shared<Options>();
  CLI::App* const command = app.add_subcommand(
      "plist", "Print a property list of either encoding as XML, between the two lines that PrintPlist adds");
  command->footer("Example:\n  $ hostutil plist Info.plist");
  command->add_option("FILE", options->file, "the property list")->required();
  command->callback([options, &status] { status = Run(*options); });
}
