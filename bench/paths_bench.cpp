// Paths beside std::filesystem::path.

#include "common/utils/paths.h"

#include <filesystem>

#include "comparison.h"
#include "platform/autorelease_pool.h"
#include "sample_data.h"

namespace {

std::string ParentByFilesystem(const std::string& path) {
  return std::filesystem::path(path).parent_path().string() + '/';
}

std::string NameByFilesystem(const std::string& path) {
  return std::filesystem::path(path).filename().string();
}

std::string StemByFilesystem(const std::string& path) {
  return std::filesystem::path(path).replace_extension().string();
}

std::string ExtensionByFilesystem(const std::string& path) {
  return std::filesystem::path(path).extension().string().substr(1);
}

void ComparePath(const std::string& data, const std::string& path) {
  static constexpr char kPeer[] = "std::filesystem::path";
  Compare("GetParentDir", data, kWellAhead)
      .Ours([&path] {
        const AutoreleasePool pool;
        return Utils::GetParentDir(path.c_str());
      })
      .Peer(kPeer, [&path] { return ParentByFilesystem(path); })
      .Remark("three text objects in the thread's pool are made on the way, and drained with it");
  Compare("GetFileName", data, kWellAhead)
      .Ours([&path] { return Utils::GetFileName(path.c_str()); })
      .Peer(kPeer, [&path] { return NameByFilesystem(path); });
  Compare("GetFileNameWithoutExt", data, kWellAhead)
      .Ours([&path] { return Utils::GetFileNameWithoutExt(path.c_str()); })
      .Peer(kPeer, [&path] { return StemByFilesystem(path); });
  Compare("GetFilePostfix", data, kWellAhead)
      .Ours([&path] { return Utils::GetFilePostfix(path.c_str()); })
      .Peer(kPeer, [&path] { return ExtensionByFilesystem(path); });
  Compare("ConcatFilePath", data, kWellAhead)
      .Ours([&path] { return Text(Utils::ConcatFilePath(path.c_str(), "notes.db")); })
      .Peer(kPeer, [&path] { return (std::filesystem::path(path) / "notes.db").string(); });
}

}  // namespace

void ComparePaths() {
  ComparePath("4 folders", Kept("/Volumes/reader/Library/Backup/Manifest.db"));
  ComparePath("100 folders", Kept(Repeated("/folder name", 1200) + "/Manifest.db"));
  Compare("GetFileCreateTime", "nothing", kLevel)
      .Ours([] { return Utils::GetFileCreateTime("", ""); })
      .Remark("gives the empty text and does nothing to compare");
}
