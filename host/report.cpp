#include "report.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <nlohmann/json.hpp>

#include "common/utils.h"
#include "terminal_text.h"

namespace {

using Json = nlohmann::ordered_json;
using TerminalText::Count;
using TerminalText::Counted;
using TerminalText::Escaped;
using TerminalText::PaddedLeft;
using TerminalText::PaddedRight;

std::string_view LayoutOf(const Report& report) {
  return report.two_level ? "two-level" : "flat";
}

// The entries by descending weight, then by name.
template <typename Value, typename Weight>
std::vector<std::pair<std::string, Value>> Largest(const std::map<std::string, Value>& map, Weight weight) {
  std::vector<std::pair<std::string, Value>> sorted(map.begin(), map.end());
  std::stable_sort(sorted.begin(), sorted.end(),
                   [&](const auto& a, const auto& b) { return weight(a.second) > weight(b.second); });
  return sorted;
}

// Builds the text report.
class Text {
 public:
  explicit Text(const Screen& screen) : screen_(screen) {}

  void Line(std::string_view text) {
    lines_ += TerminalText::ElidedEnd(std::string(text), screen_.width);
    lines_ += '\n';
  }
  void StyledLine(const std::string& text) { lines_ += text + '\n'; }
  void Heading(std::string_view text) { lines_ += '\n' + screen_.Bold(text) + '\n'; }
  void Field(std::string_view name, std::string_view value) {
    Line(PaddedRight(name, kNameWidth) + Escaped(value));
  }
  std::size_t RoomFor(std::size_t other_columns) const {
    if (screen_.width == 0) return 0;
    return std::max<std::size_t>(screen_.width - std::min(screen_.width, other_columns), 8);
  }
  const Screen& screen() const { return screen_; }
  std::string Take() { return std::move(lines_); }

 private:
  static constexpr std::size_t kNameWidth = 18;
  const Screen& screen_;
  std::string lines_;
};

// A line with the entry of a problem. Elided in the middle: the end holds the file name.
std::string NamesOf(const Problem& problem, const Text& text) {
  const std::string id =
      problem.id.empty() ? "    " : "    " + TerminalText::ElidedEnd(Escaped(problem.id), 40) + "  ";
  const std::string name = problem.domain.empty() ? problem.path : problem.domain + "  " + problem.path;
  if (problem.id.empty() && name.empty()) return id + "(unknown entry)";
  return id + TerminalText::EscapedMiddle(name, text.RoomFor(TerminalText::Width(id)));
}

// Counts by kind, with the first twenty problems in full.
void AddProblems(const Problems& problems, bool truncated, Text& text) {
  if (problems.empty()) return;
  text.StyledLine(text.screen().Red(Counted(problems.size(), "problem")) + (truncated ? kRestIsUnread : ""));
  constexpr std::size_t kShown = 20;
  std::size_t shown = 0;
  for (const ProblemKindNames& row : kProblemKinds) {
    const std::uint64_t count = problems.Count(row.kind);
    if (count == 0) continue;
    text.Line(fmt::format("  {}: {}", row.name, Count(count)));
    for (const Problem& problem : problems) {
      if (shown == kShown) break;
      if (problem.kind != row.kind) continue;
      ++shown;
      text.Line(NamesOf(problem, text));
    }
  }
  if (problems.size() > kShown) {
    text.Line(fmt::format("  and {} more, all of them in --json", Count(problems.size() - kShown)));
  }
}

void AddDomains(const Report& report, Text& text) {
  if (report.domains.empty()) return;
  text.Heading("Domains");
  constexpr std::size_t kNumbers = 2 + 2 + 12 + 2 + 10;
  constexpr std::size_t kWidest = 60;  // a longer name moves its own numbers only
  const std::size_t room = text.RoomFor(kNumbers);
  std::size_t widest = 0;
  for (const auto& [name, total] : report.domains) {
    widest = std::max(widest, TerminalText::Width(TerminalText::EscapedMiddle(name, room)));
  }
  widest = std::min(widest, kWidest);
  for (const auto& [name, total] : Largest(report.domains, [](const DomainTotal& t) { return t.bytes; })) {
    const std::string shown = TerminalText::EscapedMiddle(name, room);
    text.Line(fmt::format("  {}  {}  {}", PaddedRight(shown, widest),
                          PaddedLeft(Counted(total.files, "file"), 12),
                          PaddedLeft(TerminalText::Size(total.bytes), 10)));
  }
}

void AddExtensions(const Report& report, Text& text) {
  if (report.extensions.empty()) return;
  constexpr std::size_t kShown = 10;
  constexpr std::size_t kWidth = 16;
  text.Heading("Busiest extensions");
  const auto sorted = Largest(report.extensions, [](std::uint64_t count) { return count; });
  for (std::size_t at = 0; at < std::min(kShown, sorted.size()); ++at) {
    const std::string shown = TerminalText::ElidedEnd(Escaped(sorted[at].first), kWidth);
    text.Line(fmt::format("  {}  {}", PaddedRight(shown, kWidth), PaddedLeft(Count(sorted[at].second), 12)));
  }
  if (sorted.size() > kShown) text.Line(fmt::format("  and {} more", Count(sorted.size() - kShown)));
}

}  // namespace

void Problems::Add(Problem problem) {
  ++counts_.at(static_cast<std::size_t>(problem.kind));
  list_.push_back(std::move(problem));
}

void Problems::Merge(Problems&& other) {
  for (std::size_t kind = 0; kind < counts_.size(); ++kind) counts_.at(kind) += other.counts_.at(kind);
  const auto own = static_cast<std::ptrdiff_t>(list_.size());
  list_.insert(list_.end(), std::move_iterator(other.list_.begin()), std::move_iterator(other.list_.end()));
  std::inplace_merge(list_.begin(), list_.begin() + own, list_.end(),
                     [](const Problem& a, const Problem& b) { return a.record < b.record; });
}

std::string MonthsCovered(const Report& report) {
  return report.months.begin()->first + " to " + report.months.rbegin()->first;
}

void Report::Merge(Report&& other) {
  listed += other.listed;
  present += other.present;
  bytes += other.bytes;
  property_lists_read += other.property_lists_read;
  for (const auto& [name, total] : other.domains) {
    domains[name].files += total.files;
    domains[name].bytes += total.bytes;
  }
  for (const auto& [name, count] : other.extensions) extensions[name] += count;
  for (const auto& [name, count] : other.months) months[name] += count;
  truncated |= other.truncated;
  problems.Merge(std::move(other.problems));
}

Json ProblemsAsJson(const Problems& problems) {
  Json json = Json::array();
  for (const Problem& problem : problems) {
    json.push_back({{"kind", NameOf(problem.kind)},
                    {"id", problem.id},
                    {"domain", problem.domain},
                    {"path", problem.path}});
  }
  return json;
}

std::string ProblemsAsText(const Problems& problems, bool truncated, const Screen& screen) {
  Text text(screen);
  AddProblems(problems, truncated, text);
  return text.Take();
}

std::string ReportAsJson(const Report& report) {
  Json json = {{"root", report.root}, {"layout", LayoutOf(report)}, {"device", Json::object()}};
  for (const auto& [key, value] : report.device) json["device"][key] = value;
  json["files"] = {{"listed", report.listed}, {"present", report.present}};
  for (const ProblemKindNames& row : kProblemKinds) {
    if (!row.counts_in_json.empty())
      json["files"][std::string(row.counts_in_json)] = report.problems.Count(row.kind);
  }
  json["files"]["bytes"] = report.bytes;
  json["property_lists"] = {{"read", report.property_lists_read},
                            {"damaged", report.problems.Count(ProblemKind::DamagedPropertyList)}};
  json["domains"] = Json::object();
  // emplace_back: operator[] of an ordered object is linear in its keys.
  auto& domains = json["domains"].get_ref<Json::object_t&>();
  for (const auto& [name, total] : report.domains) {
    domains.emplace_back(name, Json{{"files", total.files}, {"bytes", total.bytes}});
  }
  json["extensions"] = Json::object();
  auto& extensions = json["extensions"].get_ref<Json::object_t&>();
  for (const auto& [name, count] : report.extensions) extensions.emplace_back(name, count);
  json["months"] = report.months;
  json["problems"] = ProblemsAsJson(report.problems);
  json["elapsed"] = report.elapsed;
  return json.dump(-1, ' ', true, Json::error_handler_t::replace) + '\n';
}

std::string ReportAsText(const Report& report, const Screen& screen) {
  Text text(screen);
  if (report.problems.empty()) {
    text.StyledLine(screen.Green("No problems") + ": " + Counted(report.listed, "file") + " checked.");
  }
  AddProblems(report.problems, report.truncated, text);

  text.Heading("Backup");
  text.Field("Folder", report.root);
  text.Field("Layout", LayoutOf(report));
  for (const auto& [key, value] : report.device) text.Field(key, value);
  if (!report.months.empty()) text.Field("Months covered", MonthsCovered(report));
  text.Field("Time taken", report.elapsed);

  text.Heading("Files");
  text.Field("Listed", Count(report.listed));
  text.Field("Present", fmt::format("{} ({})", Count(report.present), TerminalText::Size(report.bytes)));
  for (const ProblemKindNames& row : kProblemKinds) {
    if (!row.counts_in_text.empty()) text.Field(row.counts_in_text, Count(report.problems.Count(row.kind)));
  }
  text.Field("Property lists", fmt::format("{} read, {} damaged", Count(report.property_lists_read),
                                           Count(report.problems.Count(ProblemKind::DamagedPropertyList))));
  AddDomains(report, text);
  AddExtensions(report, text);
  return text.Take();
}
