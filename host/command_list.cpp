#include <algorithm>
#include <nlohmann/json.hpp>
#include <vector>

#include "command.h"
#include "common/utils.h"
#include "entry_text.h"
#include "manifest.h"
#include "output.h"
#include "selection.h"
#include "terminal_text.h"

namespace {

struct Options {
  std::string root;
  SelectionOptions selection;
  bool json = false;
};

using Json = nlohmann::ordered_json;

// The columns of a line of text output.
struct Row {
  std::string kind, size, modified, domain, path;
};

// Prints rows in aligned columns. Widths are measured on the first 1000 rows only, which bounds memory and
// delay.
class Table {
 public:
  Table(Output& output, const Screen& screen) : output_(output), screen_(screen) {}

  void Add(Row row) {
    if (!measured_) {
      first_.push_back(std::move(row));
      if (first_.size() == kMeasured) Measure();
    } else {
      Print(row);
    }
  }

  void Finish() {
    if (!measured_) Measure();
  }

 private:
  static constexpr std::size_t kMeasured = 1000;

  void Measure() {
    measured_ = true;
    for (const Row& row : first_) domain_ = std::max(domain_, TerminalText::Width(row.domain));
    constexpr std::size_t kWidest = 60;  // where nothing is cut, a longer domain moves its own path only
    domain_ = std::min(domain_, screen_.width != 0 ? std::max<std::size_t>(screen_.width / 4, 12) : kWidest);
    for (const Row& row : first_) Print(row);
    first_.clear();
  }

  void Print(const Row& row) {
    const bool cut = screen_.width != 0;
    line_.clear();
    AddCell(row.kind, 9);
    AddCell(TerminalText::PaddedLeft(row.size, 8), 8);
    AddCell(row.modified, 19);
    AddCell(cut ? TerminalText::ElidedMiddle(row.domain, domain_) : row.domain, domain_);
    const std::size_t used = TerminalText::Width(line_);
    const std::size_t room = std::max<std::size_t>(screen_.width - std::min(used, screen_.width), 12);
    line_ += cut ? TerminalText::ElidedMiddle(row.path, room) : row.path;
    line_ += '\n';
    output_.Write(line_);
  }

  // Appends `text`, padded to `width` columns, and the gap before the next cell.
  void AddCell(std::string_view text, std::size_t width) {
    const std::size_t own = TerminalText::Width(text);
    line_.append(text).append((own < width ? width - own : 0) + 2, ' ');
  }

  Output& output_;
  const Screen& screen_;
  std::vector<Row> first_;
  bool measured_ = false;
  std::size_t domain_ = 0;
  std::string line_;  // the one being printed
};

class Lister {
 public:
  explicit Lister(const Options& options)
      : selection_(options.selection),
        json_(options.json),
        folder_(options.root),
        screen_(Screen::OfStandardOutput()),
        table_(output_, screen_),
        manifest_(OpenManifest(folder_)) {}

  ExitStatus Run() {
    for (Entry entry; selection_.Next(*manifest_, entry);) Print(entry);
    table_.Finish();
    output_.Flush();
    return selection_.ReportOmissions();
  }

 private:
  void Print(const Entry& entry) {
    if (json_) {
      output_.Write(AsJson(entry).dump(-1, ' ', true, Json::error_handler_t::replace) + '\n');
    } else {
      const std::string size = entry.size ? TerminalText::Size(*entry.size) : "-";
      table_.Add({std::string(NameOf(entry.kind)), entry.kind == EntryKind::File ? size : "-",
                  DateOf(entry.modified), TerminalText::Escaped(entry.domain),
                  TerminalText::Escaped(entry.path)});
    }
  }

  Json AsJson(const Entry& entry) const {
    const std::string id = Utils::CalcFileID(entry.domain.c_str(), entry.path.c_str());
    Json json = {{"id", id},           {"domain", entry.domain},
                 {"path", entry.path}, {"kind", NameOf(entry.kind)},
                 {"size", nullptr},    {"modified", DateOf(entry.modified)},
                 {"stored", nullptr}};
    if (entry.size) json["size"] = *entry.size;
    if (entry.kind == EntryKind::File) json["stored"] = folder_.StoredPath(id);
    return json;
  }

  Selection selection_;
  bool json_;
  BackupFolder folder_;
  Output output_;
  Screen screen_;
  Table table_;
  std::unique_ptr<Manifest> manifest_;
};

ExitStatus Run(const Options& options) {
  return Lister(options).Run();
}

}  // namespace

void AddList(CLI::App& app, ExitStatus& status) {
  const auto options = std::make_shared<Options>();
  CLI::App* const command = app.add_subcommand("list", "List the files that a backup holds");
  command->footer("Example:\n  $ hostutil list backup --match '.*\\.plist'");
  command->add_option("ROOT", options->root, "the backup's folder")->required();
  AddSelection(command, options->selection);
  command->add_flag("--json", options->json, "one JSON object a line");
  command->callback([options, &status] { status = Run(*options); });
}
