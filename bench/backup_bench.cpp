// Paths, backup addressing and table checks.

#include <absl/strings/str_cat.h>
#include <nettle/sha1.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include <filesystem>

#include "bench.h"
#include "common/utils/backup_layout.h"
#include "common/utils/paths.h"
#include "common/utils/table_check.h"
#include "platform/autorelease_pool.h"

namespace fs = std::filesystem;

namespace {

void BenchPath(const std::string& data, const std::string& text) {
  const auto compare = [&](const char* function, auto ours, auto peer) {
    Compare(
        std::string(function) + '/' + data, kAheadGoal, [=] { return ours(text.c_str()); },
        Peer{"std::filesystem::path", [=] { return peer(fs::path(text)); }});
  };
  const auto parent = [](const char* file) {
    const AutoreleasePool pool;
    return Utils::GetParentDir(file);
  };
  const auto joined = [](const char* folder) { return Block(Utils::ConcatFilePath(folder, "notes.db")); };
  compare("GetParentDir", parent, [](const fs::path& file) { return file.parent_path().string() + '/'; });
  compare("GetFileName", Utils::GetFileName, [](const fs::path& file) { return file.filename().string(); });
  compare("GetFileNameWithoutExt", Utils::GetFileNameWithoutExt,
          [](fs::path file) { return file.replace_extension().string(); });
  compare("GetFilePostfix", Utils::GetFilePostfix,
          [](const fs::path& file) { return file.extension().string().substr(1); });
  compare("ConcatFilePath", joined, [](const fs::path& folder) { return (folder / "notes.db").string(); });
}

std::string DigestByNettle(std::string_view first, std::string_view second) {
  sha1_ctx context;
  sha1_init(&context);
  for (const std::string_view text : {first, std::string_view("-"), second})
    sha1_update(&context, text.size(), reinterpret_cast<const std::uint8_t*>(text.data()));
  std::uint8_t digest[SHA1_DIGEST_SIZE];
  sha1_digest(&context, sizeof digest, digest);
  std::string id(2 * sizeof digest, '\0');
  for (std::size_t i = 0; i < sizeof digest; ++i) {
    id[2 * i] = "0123456789abcdef"[digest[i] >> 4];
    id[2 * i + 1] = "0123456789abcdef"[digest[i] & 0xF];
  }
  return id;
}

void BenchFileId(const std::string& data, const std::string& path) {
  const std::string domain = "AppDomain-com.example.reader";
  Compare(
      "CalcFileID/" + data, "1.1", [=] { return Utils::CalcFileID(domain.c_str(), path.c_str()); },
      Peer{"nettle", [=] { return DigestByNettle(domain.c_str(), path.c_str()); }});
}

void BenchFilePath() {
  const std::string id = Repeated("9f3ac0d1", 40);
  const std::string root = TemporaryFolder() + '/';
  const auto ours = [=](bool two_level, bool create) {
    return [=] { return Utils::ConcatBackupFilePath(root.c_str(), id.c_str(), two_level, create); };
  };
  const auto prefix = [=] { return absl::string_view(id).substr(0, 2); };
  const auto with_folder = [=](auto create) {
    return [=] {
      const std::string folder = absl::StrCat(root, prefix());
      create(folder);
      return absl::StrCat(folder, "/", id);
    };
  };
  const auto create_directory = [](const std::string& path) { fs::create_directory(path); };
  const auto mkdir = [](const std::string& path) { static_cast<void>(::mkdir(path.c_str(), 0777)); };
  Compare("ConcatBackupFilePath/flat", kCallGoal, ours(false, false),
          Peer{"absl::StrCat", [=] { return absl::StrCat(root, id); }});
  Compare("ConcatBackupFilePath/two levels", kCallGoal, ours(true, false),
          Peer{"absl::StrCat", [=] { return absl::StrCat(root, prefix(), "/", id); }});
  Compare("ConcatBackupFilePath/two levels, folder there", kEqualGoal, ours(true, true),
          Peer{"std::filesystem::create_directory and a string", with_folder(create_directory)},
          Peer{"mkdir and a string", with_folder(mkdir)});
}

bool HasRow(sqlite3* db, const std::string& sql) {
  sqlite3_stmt* statement = nullptr;
  sqlite3_prepare(db, sql.c_str(), static_cast<int>(sql.size()), &statement, nullptr);
  const bool row = sqlite3_step(statement) == SQLITE_ROW;
  sqlite3_finalize(statement);
  return row;
}

bool CheckByHand(sqlite3* db, const std::string& table, const std::string& column) {
  return HasRow(db, "SELECT sql FROM sqlite_master WHERE type='table' AND name ='" + table + "'") &&
         HasRow(db, "select count(" + column + ") from " + table);
}

const bool kRegistered = [] {
  BenchPath("4 folders", "/Volumes/reader/Library/Backup/Manifest.db");
  BenchPath("100 folders", Repeated("/folder name", 1200) + "/Manifest.db");
  BenchFileId("a path of 65 bytes", "Library/Application Support/com.example.reader/Documents/notes.db");
  BenchFileId("a path of 1 KiB", Repeated("folder/", kKiB));
  BenchFilePath();
  static sqlite3* db = nullptr;
  sqlite3_open(":memory:", &db);
  sqlite3_exec(db, "CREATE TABLE Files(fileID TEXT, domain TEXT)", nullptr, nullptr, nullptr);
  const auto ours = [] { return Utils::TableCheck(db, "Files", "domain"); };
  const auto by_hand = [] { return CheckByHand(db, "Files", "domain"); };
  Compare("TableCheck/a table and its column", kEqualGoal, ours, Peer{"the two statements", by_hand});
  return true;
}();

}  // namespace
