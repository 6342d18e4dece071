#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>

#include "backup_plist.h"
#include "command.h"
#include "common/libplist.h"
#include "common/plist_util.h"
#include "common/utils.h"
#include "encryption.h"
#include "file_status.h"
#include "manifest.h"
#include "owners.h"
#include "progress.h"
#include "report.h"
#include "terminal_text.h"

namespace {

struct Options {
  std::string root;
  bool json = false;
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

class Inspection {
 public:
  explicit Inspection(const std::string& root) : folder_(root) {
    RefuseEncrypted(folder_);
    manifest_ = OpenManifest(folder_);
    report_.root = root;
    report_.two_level = folder_.TwoLevel();
  }

  Report Run() {
    const auto start = std::chrono::steady_clock::now();
    ReadDevice();
    ReadEntries();
    const auto elapsed = std::chrono::steady_clock::now() - start;
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(elapsed).count();
    report_.elapsed = AdoptText(Utils::ConvertSecondsToTime(static_cast<std::uint32_t>(seconds)));
    return std::move(report_);
  }

 private:
  void ReadDevice() {
    const std::string path = folder_.PathOf("Info.plist");
    const FileStatus status = StatusOf(path);
    if (status.kind == FileKind::Absent) return;
    const Plist info = status.kind == FileKind::Regular ? ReadBackupPlist(path, status.size) : nullptr;
    if (info == nullptr) {
      report_.problems.push_back(
          {ProblemKind::DamagedPropertyList, "", "", Utils::GetFileName(path.c_str())});
      return;
    }
    if (plist_get_node_type(info.get()) != PLIST_DICT) return;
    for (const char* const key :
         {"Device Name", "Product Type", "Product Version", "Serial Number", "Last Backup Date"}) {
      const auto value = DeviceValue(plist_dict_get_item(info.get(), key));
      if (value) report_.device.emplace_back(key, *value);
    }
  }

  void ReadEntries() {
    Progress progress;
    Entry entry;
    for (;;) {
      const Manifest::Next next = manifest_->Read(entry);
      if (next == Manifest::Next::End) return;
      if (next == Manifest::Next::Truncated) report_.truncated = true;
      if (next != Manifest::Next::Entry) {
        AddProblem(ProblemKind::DamagedRecord, entry.id, entry);
      } else {
        Check(entry);
      }
      progress.Advance(*manifest_);
    }
  }

  void Check(const Entry& entry) {
    const std::string id = Utils::CalcFileID(entry.domain.c_str(), entry.path.c_str());
    if (folder_.TwoLevel() && entry.id != id) {
      AddProblem(ProblemKind::MismatchedId, entry.id, entry);
    }
    if (entry.kind != EntryKind::File) return;
    ++report_.listed;
    const std::string place = folder_.StoredPath(id);
    const std::optional<std::uint64_t> size = folder_.StoredSize(place);
    if (!size) {
      AddProblem(ProblemKind::Missing, id, entry);
      return;
    }
    if (entry.size && *entry.size != *size) {
      AddProblem(ProblemKind::WrongSize, id, entry);
    }
    const std::string extension = Utils::GetFilePostfix(entry.path.c_str());
    Count(entry, extension, *size);
    if (Utils::CompareI(extension.c_str(), "plist") == 0) CheckPropertyList(entry, id, place, *size);
  }

  // Adds a present file to the totals.
  void Count(const Entry& entry, const std::string& extension, std::uint64_t size) {
    ++report_.present;
    report_.bytes += size;
    DomainTotal& domain = report_.domains[TerminalText::ValidUtf8(entry.domain)];
    ++domain.files;
    domain.bytes += size;
    if (!extension.empty()) ++report_.extensions[TerminalText::ValidUtf8(LowerCase(extension))];
    if (entry.modified) CountMonth(*entry.modified);
  }

  void CountMonth(long modified) {
    constexpr std::size_t kAfterMonth = sizeof "-14 22:13:20" - 1;  // years may have more digits than four
    std::string month = Utils::ConvertUtcToLocalDate(modified);
    if (month.size() <= kAfterMonth) return;
    month.resize(month.size() - kAfterMonth);
    ++report_.months[month];
    auto& range = report_.modified;
    if (!range) range = {modified, modified};
    range = {std::min(range->first, modified), std::max(range->second, modified)};
  }

  void CheckPropertyList(const Entry& entry, const std::string& id, const std::string& place,
                         std::uint64_t size) {
    if (ReadBackupPlist(place, size) != nullptr) {
      ++report_.property_lists_read;
      return;
    }
    AddProblem(ProblemKind::DamagedPropertyList, id, entry);
  }

  void AddProblem(ProblemKind kind, const std::string& id, const Entry& entry) {
    report_.problems.push_back({kind, id, entry.domain, entry.path});
  }

  BackupFolder folder_;
  std::unique_ptr<Manifest> manifest_;
  Report report_;
};

ExitStatus Run(const Options& options) {
  const Report report = Inspection(options.root).Run();
  Output output;
  output.Write(options.json ? ReportAsJson(report) : ReportAsText(report, Screen::OfStandardOutput()));
  output.Flush();
  return report.problems.empty() ? ExitStatus::Fine : ExitStatus::Problems;
}

}  // namespace

void AddInspect(CLI::App& app, ExitStatus& status) {
  const auto options = std::make_shared<Options>();
  CLI::App* const command = app.add_subcommand("inspect", "Check a whole backup");
  command->footer("Example:\n  hostutil inspect backup --json");
  command->add_option("ROOT", options->root, "the backup's folder")->required();
  command->add_flag("--json", options->json, "one JSON object");
  command->callback([options, &status] { status = Run(*options); });
}
