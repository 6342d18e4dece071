// The entries that --match and --domain select.
//
//   Selection selection(options);
//   while (selection.Next(*manifest, entry)) ...
//   return selection.ReportOmissions();

#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "common/utils/pattern.h"
#include "failure.h"
#include "manifest.h"

struct SelectionOptions {
  std::optional<std::string> match;   // none: every path
  std::optional<std::string> domain;  // none: every domain
};

class Selection {
 public:
  // Throws Failure when the pattern is not valid. `options` must outlive the selection.
  explicit Selection(const SelectionOptions& options);

  // A path that the pattern is too costly for is omitted.
  bool Includes(const Entry& entry);

  // Whether a record, read with the result `next`, is an entry that is included. Damaged records are omitted.
  bool Includes(Manifest::Next next, const Entry& entry);

  // Reads the next entry that is included; false at the end.
  bool Next(Manifest& manifest, Entry& entry);

  // Adds what `other` omitted.
  void Merge(const Selection& other);

  // Prints one line on standard error when anything was omitted, which is a problem.
  ExitStatus ReportOmissions() const;

 private:
  const SelectionOptions& options_;
  std::optional<Matching::Pattern> pattern_;  // Utils::MatchString would compile it for every path
  std::uint64_t damaged_ = 0;
  std::uint64_t unmatched_ = 0;
  bool truncated_ = false;
};
