#include "page.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "common/utils.h"
#include "owners.h"
#include "page_style.h"
#include "terminal_text.h"

namespace {

using TerminalText::Count;
using TerminalText::Counted;

// The policy allows nothing but the style sheet, so that even a text that was not escaped could load nothing.
constexpr std::string_view kHead = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta http-equiv="Content-Security-Policy"
 content="default-src 'none'; style-src 'unsafe-inline'; base-uri 'none'; form-action 'none'">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="color-scheme" content="light dark">
)";

// `text` for an element or a quoted attribute.
std::string Html(std::string_view text) {
  constexpr std::size_t kLongest = 1000;
  std::string html = TerminalText::EscapedMiddle(text, kLongest);
  constexpr std::pair<const char*, const char*> kEntities[] = {
      {"&", "&amp;"}, {"<", "&lt;"}, {">", "&gt;"}, {"\"", "&quot;"}, {"'", "&#39;"}};
  for (const auto& [character, entity] : kEntities) Utils::ReplaceStr(html, character, entity);
  return html;
}

// "wrong-size" as "wrong size".
std::string KindInWords(ProblemKind kind) {
  const std::string name(NameOf(kind));
  return AdoptText(Utils::ReplaceChar(name.c_str(), ' ', '-'));
}

std::string Field(std::string_view name, std::string_view value, std::string_view attributes = "") {
  return fmt::format("<div><dt>{}</dt><dd{}>{}</dd></div>\n", Html(name), attributes, Html(value));
}

std::string TitleOf(const Report& report) {
  for (const auto& [key, value] : report.device) {
    if (key == "Device Name" && !value.empty()) return value;
  }
  return report.root;
}

void AddVerdict(const Report& report, std::string& page) {
  const bool fine = report.problems.empty();
  const std::string verdict =
      fine ? "No problems: " + Counted(report.listed, "file") + " checked"
           : Counted(report.problems.size(), "problem") + (report.truncated ? kRestIsUnread : "");
  page += fmt::format(
      "<header>\n<p class=\"quiet\">Backup report</p>\n<h1>{}</h1>\n"
      "<p class=\"verdict {}\">{}</p>\n</header>\n",
      Html(TitleOf(report)), fine ? "fine" : "bad", verdict);
}

void AddFigures(const Report& report, std::string& page) {
  page += "<section>\n<h2>Files</h2>\n<dl class=\"figures\">\n";
  page += Field("listed", Count(report.listed));
  page += Field("present", Count(report.present));
  page += fmt::format("<div><dt>size</dt><dd>{}<small class=\"quiet\">{}</small></dd></div>\n",
                      TerminalText::Size(report.bytes), Counted(report.bytes, "byte"));
  page += Field("property lists read", Count(report.property_lists_read));
  for (const ProblemKindNames& row : kProblemKinds) {
    const std::uint64_t count = report.problems.Count(row.kind);
    if (count == 0 && row.counts_in_text.empty()) continue;
    page += Field(KindInWords(row.kind), Count(count), count != 0 ? " class=\"bad\"" : "");
  }
  page += "</dl>\n</section>\n";
}

void AddBackup(const Report& report, std::string& page) {
  page += "<section>\n<h2>Backup</h2>\n<dl>\n";
  for (const auto& [key, value] : report.device) page += Field(key, value);
  page += Field("Folder", report.root);
  page += Field("Layout", report.two_level ? "two-level" : "flat");
  if (!report.months.empty()) page += Field("Months covered", MonthsCovered(report));
  page += "</dl>\n</section>\n";
}

void AddProblems(const Report& report, std::string& page) {
  if (report.problems.empty()) return;
  constexpr std::size_t kShown = 1000;
  page +=
      "<section>\n<h2>Problems</h2>\n<table class=\"problems\">\n<thead><tr>"
      "<th scope=\"col\">Problem</th><th scope=\"col\">Domain</th><th scope=\"col\">Path</th>"
      "<th scope=\"col\">Identifier</th></tr></thead>\n<tbody>\n";
  const std::size_t shown = std::min(kShown, report.problems.size());
  for (std::size_t at = 0; at < shown; ++at) {
    const Problem& problem = report.problems[at];
    page += fmt::format("<tr><td>{}</td><td>{}</td><td>{}</td><td>{}</td></tr>\n", KindInWords(problem.kind),
                        Html(problem.domain), Html(problem.path), Html(problem.id));
  }
  page += "</tbody>\n</table>\n";
  if (report.problems.size() > shown) {
    page += fmt::format("<p class=\"quiet\">and {} more; hostutil inspect --json lists them all</p>\n",
                        Count(report.problems.size() - shown));
  }
  page += "</section>\n";
}

// A table with a bar in each row.
struct Chart {
  struct Row {
    std::string name;
    std::uint64_t files;
    std::uint64_t bytes;
  };

  std::string_view heading;
  std::string_view column;
  std::size_t shown;
  std::string_view rest;  // the rows that are not shown, in the singular
  bool sized;             // the bars show bytes, not files
  std::vector<Row> rows;

  double Weight(const Row& row) const { return static_cast<double>(sized ? row.bytes : row.files); }

  void SortByWeight() {
    std::stable_sort(rows.begin(), rows.end(),
                     [this](const Row& a, const Row& b) { return Weight(a) > Weight(b); });
  }
};

// `share` is what a screen reader says.
std::string Bar(double length, double share) {
  return fmt::format(
      "<svg role=\"img\" aria-label=\"{:.1f} % of all\" width=\"100%\" height=\"12\">"
      "<rect width=\"{:.1f}%\" height=\"12\" rx=\"2\"/></svg>",
      100 * share, 100 * length);
}

std::string RowOf(const Chart& chart, const Chart::Row& row, std::string_view bar) {
  constexpr std::string_view kNumber = "<td class=\"number\">{}</td>";
  std::string name = Html(row.name);
  Utils::ReplaceStr(name, ".", ".<wbr>");  // where a line may end in "com.example.notes"
  return fmt::format("<tr><th scope=\"row\">{}</th><td>{}</td>", name, bar) +
         fmt::format(kNumber, Count(row.files)) +
         (chart.sized ? fmt::format(kNumber, TerminalText::Size(row.bytes)) : "") + "</tr>\n";
}

void AddChart(const Chart& chart, std::string& page) {
  if (chart.rows.empty()) return;
  page += fmt::format(
      "<section>\n<h2>{}</h2>\n<table class=\"chart\">\n<thead><tr><th scope=\"col\">{}</th><td></td>"
      "<th scope=\"col\" class=\"number\">Files</th>{}</tr></thead>\n<tbody>\n",
      chart.heading, chart.column, chart.sized ? "<th scope=\"col\" class=\"number\">Size</th>" : "");
  const std::size_t shown = std::min(chart.shown, chart.rows.size());
  Chart::Row rest{Counted(chart.rows.size() - shown, chart.rest), 0, 0};
  double largest = 0;
  double total = 0;
  for (std::size_t at = 0; at < chart.rows.size(); ++at) {
    const Chart::Row& row = chart.rows[at];
    total += chart.Weight(row);
    largest = std::max(largest, at < shown ? chart.Weight(row) : 0);
    rest.files += at < shown ? 0 : row.files;
    rest.bytes += at < shown ? 0 : row.bytes;
  }
  for (std::size_t at = 0; at < shown; ++at) {
    const double weight = chart.Weight(chart.rows[at]);
    page += RowOf(chart, chart.rows[at], Bar(weight / std::max(largest, 1.0), weight / std::max(total, 1.0)));
  }
  if (chart.rows.size() > shown) page += RowOf(chart, rest, "");
  page += "</tbody>\n</table>\n</section>\n";
}

void AddCharts(const Report& report, std::string& page) {
  Chart domains{"Bytes by domain", "Domain", 12, "other domain", true, {}};
  for (const auto& [name, total] : report.domains) domains.rows.push_back({name, total.files, total.bytes});
  domains.SortByWeight();
  Chart extensions{"Busiest extensions", "Extension", 12, "other extension", false, {}};
  for (const auto& [name, files] : report.extensions) extensions.rows.push_back({name, files, 0});
  extensions.SortByWeight();
  Chart months{"Files by month", "Month", 24, "earlier month", false, {}};
  for (const auto& [name, files] : report.months) months.rows.push_back({name, files, 0});
  std::reverse(months.rows.begin(), months.rows.end());
  page += "<div class=\"charts\">\n";
  AddChart(domains, page);
  AddChart(extensions, page);
  AddChart(months, page);
  page += "</div>\n";
}

}  // namespace

std::string ReportAsPage(const Report& report) {
  std::string page(kHead);
  page += fmt::format("<title>Backup report: {}</title>\n", Html(TitleOf(report)));
  page += fmt::format("<style>{}</style>\n</head>\n<body>\n<main>\n", kPageStyle);
  AddVerdict(report, page);
  AddFigures(report, page);
  AddBackup(report, page);
  AddCharts(report, page);
  AddProblems(report, page);
  page += fmt::format(
      "</main>\n<footer>Inspected by hostutil {} in {}, finished at {}</footer>\n</body>\n</html>\n",
      HOSTUTIL_VERSION, report.elapsed, AdoptText(Utils::GetCurrentDate()));
  return page;
}
