// Copies the files of a backup out of it, under their own names.

#pragma once

#include <cstdint>
#include <string>

#include "report.h"
#include "selection.h"

struct ExtractOptions {
  std::string root;
  std::string destination;
  bool dry_run = false;
};

// What was extracted, or would be in a dry run.
struct Extracted {
  std::uint64_t files = 0;
  std::uint64_t folders = 0;  // that the manifest lists
  std::uint64_t links = 0;
  std::uint64_t bytes = 0;
  Problems problems;
  bool truncated = false;  // the manifest after the last damaged record is unread
  std::string elapsed;
};

// Throws Failure for an encrypted or unreadable backup, a destination that is not new or empty, and a failed
// write; Interrupted when an Interruption has recorded a signal. Files that were copied whole stay, one that
// was not is removed.
Extracted Extract(const ExtractOptions& options, Selection& selection);
