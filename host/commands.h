// The commands of the program, one function and one source file each.

#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "failure.h"

struct PlistOptions {
  std::string file;
};
ExitStatus RunPlist(const PlistOptions& options);

struct LocateOptions {
  std::string root;
  std::string domain;
  std::string path;
  bool two_level = true;
  bool create = false;
};
ExitStatus RunLocate(const LocateOptions& options);

struct ListOptions {
  std::string root;
  std::optional<std::string> match;   // none: every path
  std::optional<std::string> domain;  // none: every domain
  bool json = false;
};
ExitStatus RunList(const ListOptions& options);

struct InspectOptions {
  std::string root;
  bool json = false;
};
ExitStatus RunInspect(const InspectOptions& options);

struct SampleOptions {
  std::string folder;
  std::size_t files = 200;
  bool two_level = true;
};
ExitStatus RunSample(const SampleOptions& options);
