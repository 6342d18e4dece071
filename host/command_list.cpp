#include <algorithm>
#include <nlohmann/json.hpp>
#include <span>
#include <vector>

#include "batches.h"
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
  std::size_t jobs = 1;
};

using Json = nlohmann::ordered_json;

// Formats an entry as a line: aligned columns, or an object of JSON.
class Formatter {
 public:
  Formatter(const BackupFolder& folder, bool json) : folder_(folder), json_(json) {}

  // A longer domain moves its own path only.
  void Align(const std::vector<Entry>& entries) {
    for (const Entry& entry : entries)
      domain_width_ = std::max(domain_width_, TerminalText::Width(TerminalText::Escaped(entry.domain)));
    constexpr std::size_t kWidest = 60;  // where nothing is cut
    const std::size_t widest = screen_.width != 0 ? std::max<std::size_t>(screen_.width / 4, 12) : kWidest;
    domain_width_ = std::min(domain_width_, widest);
  }

  void Append(const Entry& entry, std::string& lines) const {
    if (json_) {
      lines += AsJson(entry).dump(-1, ' ', true, Json::error_handler_t::replace);
    } else {
      AppendColumns(entry, lines);
    }
    lines += '\n';
  }

 private:
  void AppendColumns(const Entry& entry, std::string& lines) const {
    const std::size_t start = lines.size();
    const bool has_size = entry.kind == EntryKind::File && entry.size;
    AppendCell(NameOf(entry.kind), 9, lines);
    AppendCell(TerminalText::PaddedLeft(has_size ? TerminalText::Size(*entry.size) : "-", 8), 8, lines);
    AppendCell(DateOf(entry.modified), 19, lines);
    const bool cut = screen_.width != 0;
    const std::size_t domain = lines.size();
    TerminalText::AppendEscapedMiddle(entry.domain, cut ? domain_width_ : 0, lines);
    EndCell(TerminalText::Width(std::string_view(lines).substr(domain)), domain_width_, lines);
    const std::size_t used = cut ? TerminalText::Width(std::string_view(lines).substr(start)) : 0;
    const std::size_t room = std::max<std::size_t>(screen_.width - std::min(used, screen_.width), 12);
    TerminalText::AppendEscapedMiddle(entry.path, cut ? room : 0, lines);
  }

  // REQUIRES: ASCII.
  static void AppendCell(std::string_view text, std::size_t width, std::string& lines) {
    lines += text;
    EndCell(text.size(), width, lines);
  }

  // Pads a cell of `own` columns to `width`, and appends the gap before the next.
  static void EndCell(std::size_t own, std::size_t width, std::string& lines) {
    lines.append((own < width ? width - own : 0) + 2, ' ');
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

  const BackupFolder& folder_;
  bool json_;
  Screen screen_ = Screen::OfStandardOutput();
  std::size_t domain_width_ = 0;
};

// Selects and formats entries for one thread.
class Worker {
 public:
  Worker(const SelectionOptions& options, const Formatter& formatter, Batches& batches, Output& output)
      : selection_(options), formatter_(formatter), batches_(batches), output_(output) {}

  void Use(std::span<const Record> batch) {
    lines_.clear();
    for (const Record& record : batch)
      if (selection_.Includes(record.next, record.entry)) formatter_.Append(record.entry, lines_);
    batches_.InOrder(batch, [this] { output_.Write(lines_); });
  }

  Selection Take() { return std::move(selection_); }

 private:
  Selection selection_;
  const Formatter& formatter_;
  Batches& batches_;
  Output& output_;
  std::string lines_;
};

// Prints the first entries, on which the columns are measured: few, which bounds memory and delay.
void PrintFirst(Manifest& manifest, Selection& selection, Formatter& formatter, Output& output) {
  constexpr std::size_t kMeasured = 1000;
  std::vector<Entry> first;
  for (Entry entry; first.size() < kMeasured && selection.Next(manifest, entry);) first.push_back(entry);
  formatter.Align(first);
  std::string lines;
  for (const Entry& entry : first) formatter.Append(entry, lines);
  output.Write(lines);
}

ExitStatus Run(const Options& options) {
  Selection selection(options.selection);
  const BackupFolder folder(options.root);
  const std::unique_ptr<Manifest> manifest = OpenManifest(folder);
  Formatter formatter(folder, options.json);
  Output output;
  PrintFirst(*manifest, selection, formatter, output);

  // Which paths a pattern is too costly for depends on the thread's stack and on the paths before.
  const std::size_t jobs = options.selection.match ? 1 : options.jobs;
  Batches batches(*manifest);
  const auto make = [&] { return Worker(options.selection, formatter, batches, output); };
  for (const Selection& part : batches.Share(jobs, make)) selection.Merge(part);
  output.Flush();
  return selection.ReportOmissions();
}

}  // namespace

void AddList(CLI::App& app, ExitStatus& status) {
  const auto options = std::make_shared<Options>();
  CLI::App* const command = app.add_subcommand("list", "List the files that a backup holds");
  command->footer("Example:\n  $ hostutil list backup --match '.*\\.plist'");
  command->add_option("ROOT", options->root, "the backup's folder")->required();
  AddSelection(command, options->selection);
  command->add_flag("--json", options->json, "one JSON object a line");
  AddJobs(command, options->jobs);
  command->callback([options, &status] { status = Run(*options); });
}
