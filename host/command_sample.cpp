#include <fmt/format.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "backup_folder.h"
#include "command.h"
#include "common/libplist.h"
#include "common/plist_util.h"
#include "common/utils.h"
#include "output.h"
#include "owners.h"
#include "sample_manifest.h"
#include "terminal_text.h"

namespace {

struct Options {
  std::string folder;
  std::size_t files = 200;
  bool two_level = true;
};

constexpr std::array<const char*, 5> kDomains = {"HomeDomain", "MediaDomain", "SystemDomain",
                                                 "AppDomain-com.example.notes", "AppDomain-org.example.maps"};
constexpr long kFirstTime = 1672574400;  // noon of 2023-01-01, UTC
constexpr long kDay = 86400;

void WriteFile(const std::string& path, const std::string& bytes) {
  Stream stream(std::fopen(path.c_str(), "wbx"));
  const bool written =
      stream != nullptr && std::fwrite(bytes.data(), 1, bytes.size(), stream.get()) == bytes.size();
  if (!written || std::fclose(stream.release()) != 0) throw Failure(path + ": " + std::strerror(errno));
}

// The settings of a made-up application.
std::string Settings(std::size_t number, bool binary) {
  const Plist settings(plist_new_dict());
  PlistUtil::InsertPlistDictString(settings.get(), "Name", fmt::format("Application {}", number).c_str());
  PlistUtil::AddNoneValuePlistDictString(settings.get(), "Account", nullptr);
  plist_dict_set_item(settings.get(), "Launches", plist_new_uint(number % 97));
  plist_dict_set_item(settings.get(), "Sound", plist_new_bool(number % 2 == 0));
  const plist_t recent = plist_new_array();
  for (std::size_t index = 0; index < number % 7; ++index) {
    PlistUtil::AppendPlistArrayString(recent, fmt::format("Documents/note-{}.txt", index).c_str());
  }
  plist_dict_set_item(settings.get(), "Recent", recent);
  return Libplist::Encoded(settings.get(), binary ? plist_to_bin : plist_to_xml);
}

// Deterministic pseudo-random contents of a binary file.
std::string Noise(std::size_t number) {
  std::string bytes((number * 37) % 3000 + 100, '\0');
  auto state = static_cast<std::uint32_t>(number);
  for (char& byte : bytes) {
    state = state * 1664525 + 1013904223;
    byte = static_cast<char>(static_cast<unsigned char>(state >> 24));
  }
  return bytes;
}

struct SampleFile {
  std::string path;
  std::string bytes;
};

SampleFile FileNumber(std::size_t number) {
  switch (number % 10) {
    case 0:
      return {fmt::format("Library/Preferences/com.example.app{}.plist", number), Settings(number, true)};
    case 5:
      return {fmt::format("Library/Preferences/com.example.app{}.plist", number), Settings(number, false)};
    case 1:
    case 2:
    case 3:
      return {fmt::format("Media/Photos/IMG_{:05}.JPG", number), Noise(number)};
    case 4:
      return {fmt::format("Library/Data/store-{}.sqlite", number), Noise(number)};
    default:
      return {fmt::format("Documents/note-{}.txt", number),
              fmt::format("Note {} of a sample backup.\n", number)};
  }
}

class Sample {
 public:
  explicit Sample(const Options& options) : options_(options), root_(WithSeparator(options.folder)) {}

  void Write() {
    MakeFolder();
    WriteInfo();
    manifest_ = options_.two_level ? WriteManifestDb(root_) : WriteManifestMbdb(root_);
    for (const char* const domain : kDomains) {
      for (const char* const folder : {"", "Documents", "Library", "Library/Preferences"}) {
        AddEntry({"", domain, folder, EntryKind::Directory, 0, kFirstTime}, "");
      }
    }
    AddEntry({"", kDomains[0], "Library/Latest", EntryKind::Link, 0, kFirstTime}, "Documents/note-7.txt");
    for (std::size_t number = 0; number < options_.files; ++number) AddFile(number);
    manifest_->Finish();
  }

 private:
  void MakeFolder() const {
    if (::mkdir(root_.c_str(), 0777) != 0 && errno != EEXIST) {
      throw Failure(options_.folder + ": " + std::strerror(errno));
    }
    std::error_code error;
    const bool empty = std::filesystem::is_empty(root_, error);
    if (error) throw Failure(options_.folder + ": " + error.message());
    if (!empty) throw Failure(options_.folder + ": is not empty");
  }

  void WriteInfo() const {
    const Plist info(plist_new_dict());
    PlistUtil::InsertPlistDictString(info.get(), "Device Name", "Sample device");
    PlistUtil::InsertPlistDictString(info.get(), "Product Type", "Sample1,1");
    PlistUtil::InsertPlistDictString(info.get(), "Product Version", "1.0");
    PlistUtil::InsertPlistDictString(info.get(), "Serial Number", "SAMPLE000001");
    constexpr long kLastBackup = 1'699'963'200;  // 2023-11-14 12:00:00 UTC
    plist_dict_set_item(info.get(), "Last Backup Date", Libplist::NewDate(kLastBackup));
    WriteFile(AdoptText(Utils::ConcatFilePath(root_.c_str(), "Info.plist")), Libplist::Encoded(info.get()));
  }

  void AddEntry(Entry entry, const std::string& target) {
    entry.id = Utils::CalcFileID(entry.domain.c_str(), entry.path.c_str());
    manifest_->Add(entry, target);
  }

  void AddFile(std::size_t number) {
    const SampleFile file = FileNumber(number);
    const char* const domain = kDomains.at(number % 7 % kDomains.size());
    const std::string id = Utils::CalcFileID(domain, file.path.c_str());
    WriteFile(Utils::ConcatBackupFilePath(root_.c_str(), id.c_str(), options_.two_level, true), file.bytes);
    const long modified = kFirstTime + static_cast<long>(number % 300) * kDay;
    AddEntry({"", domain, file.path, EntryKind::File, file.bytes.size(), modified}, "");
  }

  const Options& options_;
  std::string root_;
  std::unique_ptr<ManifestWriter> manifest_;
};

ExitStatus Run(const Options& options) {
  Sample(options).Write();
  Output output;
  output.Write(fmt::format("Wrote a sample backup of {} to {}\n",
                           TerminalText::Counted(options.files, "file"),
                           TerminalText::Escaped(options.folder)));
  output.Flush();
  return ExitStatus::Fine;
}

}  // namespace

void AddSample(CLI::App& app, ExitStatus& status) {
  const auto options = std::make_shared<Options>();
  CLI::App* const command = app.add_subcommand("sample", "Write a small backup to try the others on");
  command->footer("Example:\n  $ hostutil sample backup --files 500");
  command->add_option("DIR", options->folder, "a folder that is new or empty")->required();
  command->add_option("--files", options->files, "how many files (200)")
      ->check(CLI::Range(0, 10000000))
      ->type_name("N");
  AddLayout(command, options->two_level);
  command->callback([options, &status] { status = Run(*options); });
}
