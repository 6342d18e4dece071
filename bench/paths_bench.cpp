// Paths.

#include "common/utils/paths.h"

#include <filesystem>

#include "bench.h"
#include "platform/autorelease_pool.h"

using std::filesystem::path;

static void BenchPath(const std::string& data, const std::string& text) {
  const auto compare = [&](const char* function, auto ours, auto peer) {
    Compare(
        std::string(function) + '/' + data, kAheadGoal, [=] { return ours(text.c_str()); },
        Peer{"std::filesystem::path", [=] { return peer(path(text)); }});
  };
  const auto parent = [](const char* file) {
    const AutoreleasePool pool;
    return Utils::GetParentDir(file);
  };
  const auto joined = [](const char* folder) { return Block(Utils::ConcatFilePath(folder, "notes.db")); };
  compare("GetParentDir", parent, [](const path& file) { return file.parent_path().string() + '/'; });
  compare("GetFileName", Utils::GetFileName, [](const path& file) { return file.filename().string(); });
  compare("GetFileNameWithoutExt", Utils::GetFileNameWithoutExt,
          [](path file) { return file.replace_extension().string(); });
  compare("GetFilePostfix", Utils::GetFilePostfix,
          [](const path& file) { return file.extension().string().substr(1); });
  compare("ConcatFilePath", joined, [](const path& folder) { return (folder / "notes.db").string(); });
}

static const bool kRegistered = [] {
  BenchPath("4 folders", "/Volumes/reader/Library/Backup/Manifest.db");
  BenchPath("100 folders", Repeated("/folder name", 1200) + "/Manifest.db");
  return true;
}();
