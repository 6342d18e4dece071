// Backup addressing and table checks.

#include <absl/strings/str_cat.h>
#include <nettle/sha1.h>
#include <sqlite3.h>

#include <cstring>
#include <stdexcept>
#include <string_view>

#include "common/utils/backup_layout.h"
#include "common/utils/table_check.h"
#include "comparison.h"
#include "sample_data.h"

namespace {

void Update(sha1_ctx& context, std::string_view text) {
  sha1_update(&context, text.size(), reinterpret_cast<const std::uint8_t*>(text.data()));
}

// The digest alone, in hexadecimal; what is joined need not be joined in memory.
std::string DigestByNettle(const char* first, const char* second) {
  sha1_ctx context;
  sha1_init(&context);
  Update(context, first);
  Update(context, "-");
  Update(context, second);
  std::uint8_t digest[SHA1_DIGEST_SIZE];
  sha1_digest(&context, sizeof digest, digest);
  std::string id(2 * sizeof digest, '\0');
  for (std::size_t i = 0; i < sizeof digest; ++i) {
    id[2 * i] = "0123456789abcdef"[digest[i] >> 4];
    id[2 * i + 1] = "0123456789abcdef"[digest[i] & 0xF];
  }
  return id;
}

void CompareFileId(const std::string& data, const std::string& path) {
  static constexpr char kDomain[] = "AppDomain-com.example.reader";
  Compare("CalcFileID", data, {1.10, 0})
      .Ours([&path] { return Utils::CalcFileID(kDomain, path.c_str()); })
      .Peer("floor: nettle", [&path] { return DigestByNettle(kDomain, path.c_str()); })
      .Remark(
          "the service hands the digest over in a block of its own, which is copied and given back: two "
          "allocations that a short text's digest, a fraction of a microsecond, does not hide");
}

void CompareFilePath(const std::string& data, const std::string& root, bool two_level) {
  const std::string& id = Kept(Repeated("9f3ac0d1", 40));
  Comparison& comparison = Compare("ConcatBackupFilePath", data, kLevel);
  comparison.Ours(
      [=, &root, &id] { return Utils::ConcatBackupFilePath(root.c_str(), id.c_str(), two_level, false); });
  if (two_level) {
    comparison.Peer("absl::StrCat", [&root, &id] {
      return absl::StrCat(root.c_str(), absl::string_view(id.c_str()).substr(0, 2), "/", id.c_str());
    });
  } else {
    comparison.Peer("absl::StrCat", [&root, &id] { return absl::StrCat(root.c_str(), id.c_str()); });
  }
}

sqlite3* Database() {
  sqlite3* db = nullptr;
  if (sqlite3_open(":memory:", &db) != SQLITE_OK ||
      sqlite3_exec(db, "CREATE TABLE Files(fileID TEXT, domain TEXT)", nullptr, nullptr, nullptr) !=
          SQLITE_OK) {
    throw std::runtime_error("no database");
  }
  return db;
}

TableCheckStatus Step(sqlite3* db, const std::string& sql) {
  sqlite3_stmt* statement = nullptr;
  if (sqlite3_prepare(db, sql.c_str(), static_cast<int>(sql.size()), &statement, nullptr) != SQLITE_OK) {
    return TableCheckStatus::PrepareFailed;
  }
  const bool row = sqlite3_step(statement) == SQLITE_ROW;
  sqlite3_finalize(statement);
  return row ? TableCheckStatus::Found : TableCheckStatus::NotFound;
}

TableCheckResult CheckByHand(sqlite3* db, const std::string& table, const std::string& column) {
  const std::string schema = "SELECT sql FROM sqlite_master WHERE type='table' AND name ='" + table + "'";
  const TableCheckStatus found = Step(db, schema);
  return {found, Step(db, "select count(" + column + ") from " + table)};
}

void CompareTableCheck() {
  static sqlite3* const db = Database();
  const auto describe = [](const auto& job) {
    const TableCheckResult result = job();
    return std::to_string(static_cast<int>(result.table)) + ' ' +
           std::to_string(static_cast<int>(result.column));
  };
  Compare("TableCheck", "a table and its column", kLevel)
      .Ours([] { return Utils::TableCheck(db, "Files", "domain"); }, describe)
      .Peer(
          "the two statements by hand", [] { return CheckByHand(db, "Files", "domain"); }, describe);
}

}  // namespace

void CompareBackupLayout() {
  CompareFileId("a path of 62 bytes",
                Kept("Library/Application Support/com.example.reader/Documents/notes.db"));
  CompareFileId("a path of 1 KiB", Kept(Repeated("folder/", kKiB)));
  CompareFilePath("flat", Kept("/backups/1/"), false);
  CompareFilePath("two levels", Kept("/backups/1/"), true);
  CompareTableCheck();
}
