#include <fcntl.h>

#include <algorithm>
#include <chrono>
#include <span>

#include "backup_plist.h"
#include "batches.h"
#include "command.h"
#include "common/libplist.h"
#include "common/plist_util.h"
#include "common/utils.h"
#include "encryption.h"
#include "entry_text.h"
#include "manifest.h"
#include "owners.h"
#include "page.h"
#include "progress.h"
#include "replace_file.h"
#include "report.h"
#include "terminal_text.h"

namespace {

struct Options {
  std::string root;
  bool json = false;
  std::size_t jobs = 1;
  std::optional<std::string> html;  // where to write the page
};

// The text of a string or date node; none for any other.
std::optional<std::string> DeviceValue(plist_t node) {
  if (plist_get_node_type(node) == PLIST_STRING) {
    char* text = nullptr;
    plist_get_string_val(node, &text);
    return AdoptText(text);
  }
  if (plist_get_node_type(node) == PLIST_DATE) return Utils::ConvertUtcToLocalDate(Libplist::DateOf(node));
  return std::nullopt;
}

std::string LowerCase(std::string text) {
  for (char& letter : text) {
    if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
  }
  return text;
}

void ReadDevice(const BackupFolder& folder, Report& report) {
  const std::string path = folder.PathOf("Info.plist");
  const FileStatus status = StatusAt(AT_FDCWD, path.c_str());
  if (status.kind == FileKind::Absent) return;
  const Plist info = status.kind == FileKind::Regular ? ReadBackupPlist(path, status.size) : nullptr;
  if (info == nullptr) {
    const bool unreadable = status.kind == FileKind::Unreadable ||
                            (status.kind == FileKind::Regular && !IsReadable(path, status.size));
    report.problems.Add({unreadable ? ProblemKind::Unreadable : ProblemKind::DamagedPropertyList, "", "",
                         Utils::GetFileName(path.c_str())});
    return;
  }
  if (plist_get_node_type(info.get()) != PLIST_DICT) return;
  for (const char* const key :
       {"Device Name", "Product Type", "Product Version", "Serial Number", "Last Backup Date"}) {
    const auto value = DeviceValue(plist_dict_get_item(info.get(), key));
    if (value) report.device.emplace_back(key, *value);
  }
}

// Checks entries for one thread; what it found is in a report of its own.
class Checker {
 public:
  explicit Checker(const BackupFolder& folder) : folder_(folder), files_(folder) {}

  void Use(std::span<const Record> batch) {
    for (const Record& record : batch) Check(record);
  }

  Report Take() { return std::move(report_); }

 private:
  void Check(const Record& record) {
    if (record.next == Manifest::Next::Truncated) report_.truncated = true;
    if (record.next == Manifest::Next::Entry) {
      CheckEntry(record);
    } else {
      AddProblem(ProblemKind::DamagedRecord, record.entry.id, record);
    }
  }

  void CheckEntry(const Record& record) {
    const Entry& entry = record.entry;
    const std::string id = Utils::CalcFileID(entry.domain.c_str(), entry.path.c_str());
    if (folder_.TwoLevel() && entry.id != id) AddProblem(ProblemKind::MismatchedId, entry.id, record);
    if (entry.kind != EntryKind::File) return;
    ++report_.listed;
    const std::string place = folder_.StoredPath(id);
    const FileStatus status = files_.StatusOf(place);
    if (status.kind == FileKind::Regular) {
      CheckFile(record, id, place, status.size);
    } else {
      const bool unreadable = status.kind == FileKind::Unreadable;
      AddProblem(unreadable ? ProblemKind::Unreadable : ProblemKind::Missing, id, record);
    }
  }

  void CheckFile(const Record& record, const std::string& id, const std::string& place, std::uint64_t size) {
    const Entry& entry = record.entry;
    const std::string extension = Utils::GetFilePostfix(entry.path.c_str());
    const bool is_list = Utils::CompareI(extension.c_str(), "plist") == 0;
    const bool parses = is_list && ReadBackupPlist(place, size) != nullptr;
    const bool readable = parses || (is_list ? IsReadable(place, size) : files_.MayRead(place));
    if (!readable) {
      AddProblem(ProblemKind::Unreadable, id, record);
      return;
    }
    if (entry.size && *entry.size != size) AddProblem(ProblemKind::WrongSize, id, record);
    Count(entry, extension, size);
    if (parses) ++report_.property_lists_read;
    if (is_list && !parses) AddProblem(ProblemKind::DamagedPropertyList, id, record);
  }

  // Adds a present file to the totals.
  void Count(const Entry& entry, const std::string& extension, std::uint64_t size) {
    ++report_.present;
    report_.bytes += size;
    DomainTotal& domain = report_.domains[TerminalText::ValidUtf8(entry.domain)];
    ++domain.files;
    domain.bytes += size;
    if (!extension.empty()) ++report_.extensions[TerminalText::ValidUtf8(LowerCase(extension))];
    CountMonth(DateOf(entry.modified));
  }

  void CountMonth(std::string date) {
    constexpr std::size_t kAfterMonth = sizeof "-14 22:13:20" - 1;  // years may have more digits than four
    if (date.size() <= kAfterMonth) return;
    date.resize(date.size() - kAfterMonth);
    ++report_.months[date];
  }

  void AddProblem(ProblemKind kind, const std::string& id, const Record& record) {
    report_.problems.Add({kind, id, record.entry.domain, record.entry.path, record.number});
  }

  const BackupFolder& folder_;
  StoredFiles files_;
  Report report_;
};

// The report on all records; its content does not depend on `jobs`, the number of threads.
Report Inspect(const std::string& root, std::size_t jobs) {
  const BackupFolder folder(root);
  RefuseEncrypted(folder);
  const std::unique_ptr<Manifest> manifest = OpenManifest(folder);
  Progress progress;
  Report report;
  report.two_level = folder.TwoLevel();
  ReadDevice(folder, report);
  Batches batches(*manifest, &progress);
  for (Report& part : batches.Share(jobs, [&] { return Checker(folder); })) report.Merge(std::move(part));
  return report;
}

ExitStatus Run(const Options& options) {
  const auto start = std::chrono::steady_clock::now();
  Report report = Inspect(options.root, options.jobs);
  const auto elapsed = std::chrono::steady_clock::now() - start;
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(elapsed).count();
  report.root = options.root;
  report.elapsed = AdoptText(Utils::ConvertSecondsToTime(static_cast<std::uint32_t>(seconds)));
  if (options.html) ReplaceFile(*options.html, ReportAsPage(report));
  Output output;
  output.Write(options.json ? ReportAsJson(report) : ReportAsText(report, Screen::OfStandardOutput()));
  output.Flush();
  return report.problems.empty() ? ExitStatus::Fine : ExitStatus::Problems;
}

}  // namespace

void AddInspect(CLI::App& app, ExitStatus& status) {
  const auto options = std::make_shared<Options>();
  CLI::App* const command = app.add_subcommand("inspect", "Check a whole backup");
  command->footer("Example:\n  $ hostutil inspect backup --json");
  command->add_option("ROOT", options->root, "the backup's folder")->required();
  command->add_flag("--json", options->json, "one JSON object");
  AddJobs(command, options->jobs);
  command->add_option("--html", options->html, "also write the report to FILE, as a page")->type_name("FILE");
  command->callback([options, &status] { status = Run(*options); });
}
