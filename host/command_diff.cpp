#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <tuple>
#include <vector>

#include "command.h"
#include "entry_text.h"
#include "manifest.h"
#include "output.h"
#include "selection.h"
#include "terminal_text.h"

namespace {

using Json = nlohmann::ordered_json;

struct Options {
  std::string old_root;
  std::string new_root;
  SelectionOptions selection;
  bool json = false;
};

// The entries of a backup in the order of their bytes. A backup can have millions, so the texts of all are in
// one block.
class Listing {
 public:
  struct Item {
    std::size_t start;   // of the texts
    std::uint32_t size;  // of the texts
    EntryKind kind;
    std::optional<std::uint64_t> bytes;
    std::optional<long> modified;
  };

  Listing(const std::string& root, Selection& selection) {
    const std::unique_ptr<Manifest> manifest = OpenManifest(BackupFolder(root));
    for (Entry entry; selection.Next(*manifest, entry);) Add(entry);
    // Size and time, too: of a path listed twice, either may come first.
    std::sort(items_.begin(), items_.end(), [this](const Item& a, const Item& b) {
      const int order = TextsOf(a).compare(TextsOf(b));
      return order != 0 ? order < 0
                        : std::tie(a.kind, a.bytes, a.modified) < std::tie(b.kind, b.bytes, b.modified);
    });
  }

  const std::vector<Item>& items() const { return items_; }

  // The domain, a NUL, which neither text holds, and the path: their order is that of the domain, then the
  // path.
  std::string_view TextsOf(const Item& item) const {
    return std::string_view(texts_).substr(item.start, item.size);
  }

 private:
  void Add(const Entry& entry) {
    const auto size = static_cast<std::uint32_t>(entry.domain.size() + 1 + entry.path.size());
    items_.push_back({texts_.size(), size, entry.kind, entry.size, entry.modified});
    texts_.append(entry.domain).append(1, '\0').append(entry.path);
  }

  std::string texts_;
  std::vector<Item> items_;
};

class Comparison {
 public:
  explicit Comparison(const Options& options)
      : json_(options.json),
        selection_(options.selection),
        old_(options.old_root, selection_),
        new_(options.new_root, selection_) {}

  ExitStatus Run() {
    auto before = old_.items().begin();
    auto after = new_.items().begin();
    while (before != old_.items().end() || after != new_.items().end()) {
      const int order = Order(before, after);
      if (order < 0) {
        Print('D', &*before++, nullptr);
      } else if (order > 0) {
        Print('A', nullptr, &*after++);
      } else {
        if (IsChanged(*before, *after)) Print('M', &*before, &*after);
        ++before;
        ++after;
      }
    }
    output_.Flush();
    const ExitStatus omissions = selection_.ReportOmissions();
    return differ_ ? ExitStatus::Problems : omissions;
  }

 private:
  using Item = Listing::Item;
  using Position = std::vector<Item>::const_iterator;

  // Below, at or above zero as the next old entry sorts before, with or after the next new one.
  int Order(Position before, Position after) const {
    if (before == old_.items().end()) return 1;
    if (after == new_.items().end()) return -1;
    const int order = old_.TextsOf(*before).compare(new_.TextsOf(*after));
    return order != 0 ? order : static_cast<int>(before->kind) - static_cast<int>(after->kind);
  }

  static bool IsChanged(const Item& before, const Item& after) {
    const auto differ = [](const auto& a, const auto& b) { return a && b && *a != *b; };
    return before.kind == EntryKind::File &&
           (differ(before.bytes, after.bytes) || differ(before.modified, after.modified));
  }

  // Either item may be null, for a file that was added or removed.
  void Print(char change, const Item* before, const Item* after) {
    differ_ = true;
    const std::string_view texts = after != nullptr ? new_.TextsOf(*after) : old_.TextsOf(*before);
    const std::size_t end = texts.find('\0');
    const std::string_view domain = texts.substr(0, end);
    const std::string_view path = texts.substr(end + 1);
    const std::string_view kind = NameOf((after != nullptr ? after : before)->kind);
    if (json_) {
      const char* const name = change == 'A' ? "added" : change == 'D' ? "removed" : "changed";
      const Json line = {{"change", name},
                         {"domain", domain},
                         {"path", path},
                         {"kind", kind},
                         {"size", {SizeOf(before), SizeOf(after)}},
                         {"modified", {TimeOf(before), TimeOf(after)}}};
      output_.Write(line.dump(-1, ' ', true, Json::error_handler_t::replace) + '\n');
    } else {
      output_.Write(fmt::format("{}  {:9}  {}  {}\n", change, kind, TerminalText::Escaped(domain),
                                TerminalText::Escaped(path)));
    }
  }

  static Json SizeOf(const Item* item) {
    return item != nullptr && item->bytes ? Json(*item->bytes) : Json(nullptr);
  }
  static Json TimeOf(const Item* item) {
    return item != nullptr && item->modified ? Json(DateOf(item->modified)) : Json(nullptr);
  }

  bool json_;
  Selection selection_;
  Listing old_;
  Listing new_;
  Output output_;
  bool differ_ = false;
};

ExitStatus Run(const Options& options) {
  return Comparison(options).Run();
}

}  // namespace

void AddDiff(CLI::App& app, ExitStatus& status) {
  const auto options = std::make_shared<Options>();
  CLI::App* const command =
      app.add_subcommand("diff", "List what was added, removed and changed between two backups");
  command->footer(
      "A is added, D removed, M changed: a file of another size or time, where both backups record it.\n\n"
      "Example:\n  $ hostutil diff backup newer-backup --domain HomeDomain");
  command->add_option("OLD", options->old_root, "a backup's folder")->required();
  command->add_option("NEW", options->new_root, "the folder of another, of either generation")->required();
  AddSelection(command, options->selection);
  command->add_flag("--json", options->json, "one JSON object a line");
  command->callback([options, &status] { status = Run(*options); });
}
