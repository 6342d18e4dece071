// What an inspection of a backup finds, and its two forms: for people and for programs.

#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "output.h"

enum class ProblemKind { Missing, MismatchedId, WrongSize, DamagedPropertyList, DamagedRecord };
inline constexpr std::array<std::string_view, 5> kProblemKinds = {"missing", "mismatched-id", "wrong-size",
                                                                  "damaged-property-list", "damaged-record"};

struct Problem {
  ProblemKind kind;
  std::string id;  // the computed one; of a mismatched or damaged entry the manifest's own
  std::string domain;
  std::string path;
};

struct DomainTotal {
  std::uint64_t files = 0;
  std::uint64_t bytes = 0;
};

struct Report {
  std::string root;
  bool two_level = true;
  std::vector<std::pair<std::string, std::string>> device;

  std::uint64_t listed = 0;
  std::uint64_t present = 0;
  std::uint64_t missing = 0;
  std::uint64_t mismatched_id = 0;
  std::uint64_t wrong_size = 0;
  std::uint64_t bytes = 0;
  std::uint64_t property_lists_read = 0;
  std::uint64_t property_lists_damaged = 0;

  // Names in these three are valid UTF-8: invalid ones that would look alike are one.
  std::map<std::string, DomainTotal> domains;
  std::map<std::string, std::uint64_t> extensions;
  std::map<std::string, std::uint64_t> months;
  std::optional<std::pair<long, long>> modified;  // the earliest and the latest

  std::vector<Problem> problems;
  bool broken_off = false;  // the rest of the manifest cannot be read; the last damaged record stands for it
  std::string elapsed;
};

// One JSON object on one line, in ASCII.
std::string ReportAsJson(const Report& report);

// Lines for people, fit for `screen`.
std::string ReportAsText(const Report& report, const Screen& screen);
