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

// A kind's name, and the labels of its count in the text and in the JSON; no count is shown for an empty
// label.
struct ProblemKindNames {
  ProblemKind kind;
  std::string_view name;
  std::string_view counts_in_text;
  std::string_view counts_in_json;
};

// In the order of the enumeration.
inline constexpr auto kProblemKinds = std::to_array<ProblemKindNames>({
    {ProblemKind::Missing, "missing", "Missing", "missing"},
    {ProblemKind::Unreadable, "unreadable", "Unreadable", ""},
    {ProblemKind::MismatchedId, "mismatched-id", "Mismatched id", "mismatched_id"},
    {ProblemKind::WrongSize, "wrong-size", "Wrong size", "wrong_size"},
    {ProblemKind::DamagedPropertyList, "damaged-property-list", "", ""},
    {ProblemKind::DamagedRecord, "damaged-record", "", ""},
    {ProblemKind::UnsafePath, "unsafe-path", "", ""},
    {ProblemKind::Conflict, "conflict", "", ""},
});

inline std::string_view NameOf(ProblemKind kind) {
  return kProblemKinds.at(static_cast<std::size_t>(kind)).name;
}

struct Problem {
  ProblemKind kind;
  std::string id;  // computed; the manifest's own for a mismatched identifier or damaged record
  std::string domain;
  std::string path;
  std::uint64_t record = 0;  // of the manifest, from 1; 0: of none
};

// Problems in the manifest's order, and how many there are of each kind.
class Problems {
 public:
  // Adds a problem of the same record as the last one, or of a later record.
  void Add(Problem problem);

  // Adds the problems of other records.
  void Merge(Problems&& other);

  std::uint64_t Count(ProblemKind kind) const { return counts_.at(static_cast<std::size_t>(kind)); }

  std::size_t size() const { return list_.size(); }
  bool empty() const { return list_.empty(); }
  auto begin() const { return list_.begin(); }
  auto end() const { return list_.end(); }
  const Problem& operator[](std::size_t at) const { return list_[at]; }

 private:
  std::vector<Problem> list_;
  std::array<std::uint64_t, kProblemKinds.size()> counts_{};
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

  Problems problems;
  bool truncated = false;  // the manifest after the last damaged record is unread
  std::string elapsed;

  // Adds what `other` found in other records of the same manifest.
  void Merge(Report&& other);
};

// "2023-01 to 2023-07". REQUIRES: the report has months.
std::string MonthsCovered(const Report& report);

// One JSON object on one line, in ASCII.
std::string ReportAsJson(const Report& report);

// Text for people, cut to the width of `screen`.
std::string ReportAsText(const Report& report, const Screen& screen);

// Follows the number of problems in a truncated report.
inline constexpr char kRestIsUnread[] = ", and the rest of the manifest cannot be read";

// The problems alone, in the same two forms. The text is empty without problems; `truncated` as in Report.
nlohmann::ordered_json ProblemsAsJson(const Problems& problems);
std::string ProblemsAsText(const Problems& problems, bool truncated, const Screen& screen);
