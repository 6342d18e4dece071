#include "selection.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <cstdio>
#include <regex>
#include <vector>

#include "terminal_text.h"

Selection::Selection(const SelectionOptions& options) : options_(options) {
  if (!options.match) return;
  try {
    pattern_.emplace(*options.match);
  } catch (const std::regex_error& error) {
    using namespace std::regex_constants;
    const bool too_large = error.code() == error_space || error.code() == error_stack;
    throw Failure(fmt::format("--match {}: {}", *options.match,
                              too_large ? "the expression is too large" : error.what()));
  }
}

bool Selection::Includes(const Entry& entry) {
  if (options_.domain && entry.domain != *options_.domain) return false;
  if (!pattern_) return true;
  try {
    return pattern_->MatchesWhole(entry.path);
  } catch (const std::regex_error&) {
    ++unmatched_;
    return false;
  }
}

bool Selection::Includes(Manifest::Next next, const Entry& entry) {
  if (next == Manifest::Next::Damaged) ++damaged_;
  if (next == Manifest::Next::Truncated) truncated_ = true;
  return next == Manifest::Next::Entry && Includes(entry);
}

bool Selection::Next(Manifest& manifest, Entry& entry) {
  for (;;) {
    const Manifest::Next next = manifest.Read(entry);
    if (next == Manifest::Next::End) return false;
    if (Includes(next, entry)) return true;
  }
}

void Selection::Merge(const Selection& other) {
  damaged_ += other.damaged_;
  unmatched_ += other.unmatched_;
  truncated_ |= other.truncated_;
}

ExitStatus Selection::ReportOmissions() const {
  std::vector<std::string> omissions;
  if (damaged_ != 0) omissions.push_back("left out " + TerminalText::Counted(damaged_, "damaged record"));
  if (unmatched_ != 0)
    omissions.push_back("left out " + TerminalText::Counted(unmatched_, "path") +
                        " that --match takes too long for");
  if (truncated_) omissions.emplace_back("could not read the rest of the manifest");
  if (omissions.empty()) return ExitStatus::Fine;
  std::fputs(fmt::format("hostutil: {}\n", fmt::join(omissions, ", ")).c_str(), stderr);
  return ExitStatus::Problems;
}
