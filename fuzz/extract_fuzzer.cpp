// Extraction: whatever the manifest holds, nothing outside the destination changes, everything that is
// reported as extracted is inside it, and a dry run reports the same. Each line of the input is an entry: its
// kind, one of "fdl", its domain, a tab and its path.

#include <stdlib.h>
#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "common/basic/basic_services.h"
#include "fuzz/check.h"
#include "host/extraction.h"
#include "host/sample_manifest.h"
#include "platform/autorelease_pool.h"
#include "support/services.h"

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kContents = "contents";

// Gives every file one identifier, so that each is stored.
class OneIdentifier final : public IBasUtilityString {
 public:
  void FreeString(char* text) override { std::free(text); }
  char* DigestString(const char* /*text*/) override { return ::strdup("stored"); }
};

// A folder with the backup and other files; the destination is further down, so that ".." leads to them.
class Place {
 public:
  Place() : path_(fs::exists("/dev/shm") ? "/dev/shm" : fs::temp_directory_path()) {
    std::string name = path_ / "extract-XXXXXX";
    Fuzz::Require(::mkdtemp(name.data()) != nullptr, "there is a folder to work in");
    path_ = name;
    fs::create_directories(Destination());
    fs::create_directories(Backup());
    for (const char* const file : {"backup/stored", "a", "1/a", "1/2/a"}) {
      std::ofstream(path_ / file) << kContents;
    }
  }
  ~Place() { fs::remove_all(path_); }

  fs::path Backup() const { return path_ / "backup"; }
  fs::path Destination() const { return path_ / "1/2/dest"; }

  // Everything outside the destination, with the times of change.
  std::string Outside() const {
    std::string all;
    for (auto at = fs::recursive_directory_iterator(path_); at != fs::recursive_directory_iterator(); ++at) {
      struct stat status {};
      Fuzz::Require(::lstat(at->path().c_str(), &status) == 0, "a file has a status");
      const bool is_destination = at->path() == Destination();
      if (is_destination) at.disable_recursion_pending();
      all += at->path().string() + '\n';
      if (is_destination) continue;
      for (const long number : {status.st_ctim.tv_sec, status.st_ctim.tv_nsec, status.st_size}) {
        all += std::to_string(number) + '\n';
      }
    }
    return all;
  }

 private:
  fs::path path_;
};

void WriteManifest(std::string_view input, const fs::path& backup) {
  fs::remove(backup / "Manifest.mbdb");
  const auto manifest = WriteManifestMbdb(backup.string() + '/');
  manifest->Add({"", "Domain", "", EntryKind::Directory, 0, 1}, "");  // an empty manifest is refused
  while (!input.empty()) {
    std::string_view line = Fuzz::TakeLine(input);
    if (line.empty()) continue;
    const EntryKind kind = line[0] == 'l'   ? EntryKind::Link
                           : line[0] == 'd' ? EntryKind::Directory
                                            : EntryKind::File;
    line.remove_prefix(1);
    const std::size_t tab = std::min(line.find('\t'), line.size());
    const std::string_view path = line.substr(std::min(tab + 1, line.size()));
    manifest->Add({"", std::string(line.substr(0, tab)), std::string(path), kind, kContents.size(), 1}, "");
  }
  manifest->Finish();
}

bool Agree(const Extracted& a, const Extracted& b) {
  return a.files == b.files && a.folders == b.folders && a.links == b.links && a.bytes == b.bytes &&
         std::equal(a.problems.begin(), a.problems.end(), b.problems.begin(), b.problems.end(),
                    [](const Problem& x, const Problem& y) { return x.kind == y.kind && x.path == y.path; });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  constexpr std::size_t kMostDeep = 400;  // remove_all opens every folder on the way down
  const std::string_view input = Fuzz::Input(bytes, size);
  if (std::count(input.begin(), input.end(), '/') > static_cast<std::ptrdiff_t>(kMostDeep)) return 0;
  const AutoreleasePool pool;
  static const Place place;
  OneIdentifier identifiers;
  const ServiceOverride<IBasUtilityString> service(&identifiers);
  WriteManifest(input, place.Backup());
  const std::string before = place.Outside();

  const SelectionOptions all;
  Selection selection(all);
  const Extracted rehearsed = Extract({place.Backup(), place.Destination(), true}, selection);
  Fuzz::Require(fs::is_empty(place.Destination()), "a dry run writes nothing");
  const Extracted extracted = Extract({place.Backup(), place.Destination(), false}, selection);
  Fuzz::Require(Agree(rehearsed, extracted), "a dry run reports what extraction does");
  Fuzz::Require(place.Outside() == before, "nothing outside changes");

  std::uint64_t files = 0;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(place.Destination())) {
    Fuzz::Require(entry.is_directory() || entry.is_regular_file(), "only folders and files are made");
    if (entry.is_directory()) continue;
    ++files;
    Fuzz::Require(entry.file_size() == kContents.size(), "a file is whole");
  }
  Fuzz::Require(files == extracted.files, "every file is in the destination");
  for (const fs::directory_entry& entry : fs::directory_iterator(place.Destination())) {
    fs::remove_all(entry.path());
  }
  return 0;
}
