// Paths.

#include "common/utils/paths.h"

#include <filesystem>

#include "bench.h"
#include "platform/autorelease_pool.h"

namespace {

namespace fs = std::filesystem;

void BenchPath(const std::string& data, const std::string& path) {
  static constexpr char kPeer[] = "std::filesystem::path";
  Compare(
      "GetParentDir/" + data, kAheadGoal,
      [=] {
        const AutoreleasePool pool;
        return Utils::GetParentDir(path.c_str());
      },
      Peer{kPeer, [=] { return fs::path(path).parent_path().string() + '/'; }});
  Compare(
      "GetFileName/" + data, kAheadGoal, [=] { return Utils::GetFileName(path.c_str()); },
      Peer{kPeer, [=] { return fs::path(path).filename().string(); }});
  Compare(
      "GetFileNameWithoutExt/" + data, kAheadGoal, [=] { return Utils::GetFileNameWithoutExt(path.c_str()); },
      Peer{kPeer, [=] { return fs::path(path).replace_extension().string(); }});
  Compare(
      "GetFilePostfix/" + data, kAheadGoal, [=] { return Utils::GetFilePostfix(path.c_str()); },
      Peer{kPeer, [=] { return fs::path(path).extension().string().substr(1); }});
  Compare(
      "ConcatFilePath/" + data, kAheadGoal,
      [=] { return Own(Utils::ConcatFilePath(path.c_str(), "notes.db")); },
      Peer{kPeer, [=] { return Own(::strdup((fs::path(path) / "notes.db").c_str())); }});
}

}  // namespace

void RegisterPaths() {
  BenchPath("4 folders", "/Volumes/reader/Library/Backup/Manifest.db");
  BenchPath("100 folders", Repeated("/folder name", 1200) + "/Manifest.db");
  Compare(
      "GetFileCreateTime/always empty", kCallGoal, [] { return Utils::GetFileCreateTime("", ""); },
      Peer{"std::string()", [] { return std::string(); }});
}
