// The result of inspecting a backup, and its two forms: text and JSON.

#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "output.h"

enum class ProblemKind {
  Missing,
  Unreadable,
  MismatchedId,
  WrongSize,
  DamagedPropertyList,
  DamagedRecord,
  UnsafePath,
  Conflict
};

// The name of each kind, in the order of the enumeration.
inline constexpr std::array<std::string_view, 8> kProblemNames = {
    "missing",        "unreadable",  "mismatched-id", "wrong-size", "damaged-property-list",
    "damaged-record", "unsafe-path", "conflict"};

struct Problem {
  ProblemKind kind;
  std::string id;  // computed; the manifest's own for a mismatched identifier or damaged record
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
  std::uint64_t bytes = 0;
  std::uint64_t property_lists_read = 0;

  // Keys are valid UTF-8: names that differ only in invalid bytes share one.
  std::map<std::string, DomainTotal> domains;
  std::map<std::string, std::uint64_t> extensions;
  std::map<std::string, std::uint64_t> months;
  std::optional<std::pair<long, long>> modified;  // the earliest and the latest

  std::vector<Problem> problems;

  // Linear in the number of problems.
  std::uint64_t Count(ProblemKind kind) const;

  bool truncated = false;  // the manifest after the last damaged record is unread
  std::string elapsed;
};

// One JSON object on one line, in ASCII.
std::string ReportAsJson(const Report& report);

// Text for people, cut to the width of `screen`.
std::string ReportAsText(const Report& report, const Screen& screen);

// The problems alone, in the same two forms. The text is empty without problems; `truncated` as in Report.
nlohmann::ordered_json ProblemsAsJson(const std::vector<Problem>& problems);
std::string ProblemsAsText(const std::vector<Problem>& problems, bool truncated, const Screen& screen);
