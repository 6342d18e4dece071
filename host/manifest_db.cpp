// The rows of a manifest database as entries.

#include <fmt/format.h>
#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <cstdint>

#include "common/utils.h"
#include "failure.h"
#include "file_status.h"
#include "keyed_archive.h"
#include "manifest.h"
#include "untrusted_database.h"

namespace {

constexpr char kTable[] = "Files";
constexpr char kColumns[] = "PRAGMA table_xinfo(Files)";
constexpr char kRows[] = "SELECT fileID, domain, relativePath, flags, file FROM Files";
constexpr char kLastRow[] = "SELECT max(rowid) FROM Files";
enum Column : std::uint8_t { kId, kDomain, kPath, kFlags, kFile };

constexpr std::size_t kLongestText = 65534;  // bytes, as in the record file of the other generation
constexpr std::size_t kLargestCopy = 4096;   // bytes of an archive, usually a few hundred
constexpr std::uint64_t kSmallestRow = 8;  // bytes: two of pointer, two of prefix, a header for five columns

// Why the rows cannot be read, after the statement for them failed with `code`.
std::string Reason(sqlite3* database, int code) {
  const std::string message = sqlite3_errmsg(database);
  switch (code & 0xFF) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      return "is locked by another program";
    case SQLITE_NOTADB:
      return "is not an SQLite database";
    case SQLITE_CORRUPT:
    case SQLITE_INTERRUPT:
      return "is a damaged database";
    case SQLITE_READONLY:
      return "holds an unfinished transaction";
    case SQLITE_ERROR:
      break;
    default:
      return message;
  }
  if (Utils::TableCheck(database, kTable, nullptr).table != TableCheckStatus::Found)
    return "has no table Files";
  for (const char* const column : {"fileID", "domain", "relativePath", "flags", "file"}) {
    const TableCheckResult found = Utils::TableCheck(database, kTable, column);
    if (found.column == TableCheckStatus::PrepareFailed) {
      return fmt::format("has no readable column {} in its table Files", column);
    }
  }
  return message;
}

struct Value {
  int type;
  std::size_t length;  // in bytes, of a text or blob
};

class DatabaseReader final : public Manifest {
 public:
  explicit DatabaseReader(const std::string& path)
      : path_(path), database_(OpenUntrustedDatabase(path, kTable)) {
    RefuseComputedColumns();
    rows_ = Prepare(kRows);
    // The first step takes the lock, so an unreadable table fails here, before any output.
    step_ = sqlite3_step(rows_.get());
    if (step_ != SQLITE_ROW && step_ != SQLITE_DONE) Fail(step_);
    LimitWork(database_.get(), false);
    // A malicious file can share pages, cells and overflow chains, so a scan can return more than it holds. A
    // valid table has no more rows or bytes than this; UTF-16 grows by half as UTF-8.
    const std::uint64_t size = StatusOf(path).size + StatusOf(path + "-wal").size;
    most_rows_ = size / kSmallestRow;
    most_bytes_ = 2 * size;
  }

  Next ReadRecord(Entry& entry) override {
    entry.Clear();
    if (step_ == SQLITE_DONE) return Next::End;
    if (step_ != SQLITE_ROW || rows_read_ == most_rows_ || bytes_read_ > most_bytes_) {
      step_ = SQLITE_DONE;
      return Next::Truncated;
    }
    ++rows_read_;
    Measure();
    const bool usable = ReadRow(entry);
    step_ = sqlite3_step(rows_.get());
    return usable ? Next::Entry : Next::Damaged;
  }

  Next Decode(Next next, Entry& entry) const override {
    if (next != Next::Entry || entry.archive.empty()) return next;
    return DecodeKeyedArchive(entry.archive.data(), entry.archive.size(), entry) ? next : Next::Damaged;
  }

  Position Where() override {
    if (!last_row_id_) last_row_id_ = LastRowId();
    return {rows_read_, *last_row_id_};
  }

 private:
  [[noreturn]] void Fail(int code) {
    throw Failure(fmt::format("{}: {}", path_, Reason(database_.get(), code)));
  }

  Statement Prepare(const char* sql) {
    sqlite3_stmt* prepared = nullptr;
    const int code = sqlite3_prepare_v2(database_.get(), sql, -1, &prepared, nullptr);
    Statement statement(prepared);
    if (code != SQLITE_OK) Fail(code);
    return statement;
  }

  // A generated column can compute forever.
  void RefuseComputedColumns() {
    constexpr int kHidden = 6;
    const Statement columns = Prepare(kColumns);
    int code = SQLITE_OK;
    while ((code = sqlite3_step(columns.get())) == SQLITE_ROW) {
      if (sqlite3_column_int(columns.get(), kHidden) == 0) continue;
      throw Failure(path_ + ": has a generated column in its table Files, which is not supported");
    }
    if (code != SQLITE_DONE) Fail(code);
  }

  // An estimate of the number of rows from one seek, 0 when unknown: counting could take forever.
  std::uint64_t LastRowId() {
    LimitWork(database_.get(), true);
    sqlite3_stmt* prepared = nullptr;
    sqlite3_prepare_v2(database_.get(), kLastRow, -1, &prepared, nullptr);
    const Statement last(prepared);
    const bool found = sqlite3_step(prepared) == SQLITE_ROW;
    LimitWork(database_.get(), false);
    return found ? static_cast<std::uint64_t>(std::max<sqlite3_int64>(sqlite3_column_int64(prepared, 0), 0))
                 : 0;
  }

  // Reads the type of each column, and the length of a text or blob.
  void Measure() {
    int column = kId;
    for (Value& value : values_) {
      value.type = sqlite3_column_type(rows_.get(), column);
      const bool has_bytes = value.type == SQLITE_TEXT || value.type == SQLITE_BLOB;
      value.length = has_bytes ? static_cast<std::size_t>(sqlite3_column_bytes(rows_.get(), column)) : 0;
      bytes_read_ += value.length;
      ++column;
    }
  }

  // False when the column is not a valid text of an entry.
  bool ReadText(Column column, std::string& text) {
    const auto [type, length] = values_.at(column);
    if (type != SQLITE_TEXT || length > kLongestText) return false;
    const unsigned char* const bytes = sqlite3_column_text(rows_.get(), column);
    if (bytes == nullptr) return false;
    text.assign(reinterpret_cast<const char*>(bytes), length);
    return text.find('\0') == std::string::npos;
  }

  bool ReadDescription(Entry& entry) {
    const auto [type, length] = values_[kFile];
    if (type == SQLITE_NULL) return true;
    if (type != SQLITE_BLOB) return false;
    const auto* const bytes = static_cast<const char*>(sqlite3_column_blob(rows_.get(), kFile));
    if (bytes == nullptr) return false;  // also when it is empty
    if (length > kLargestCopy) return DecodeKeyedArchive(bytes, length, entry);
    entry.archive.assign(bytes, length);
    return true;
  }

  bool ReadRow(Entry& entry) {
    // Read all three even when one is invalid: they identify the damaged row.
    const bool id = ReadText(kId, entry.id);
    const bool domain = ReadText(kDomain, entry.domain);
    const bool path = ReadText(kPath, entry.path);
    if (!id || !domain || !path || values_[kFlags].type != SQLITE_INTEGER) return false;
    const std::optional<EntryKind> kind = KindOf(sqlite3_column_int64(rows_.get(), kFlags), kDatabaseKinds);
    if (!kind) return false;
    entry.kind = *kind;
    return ReadDescription(entry);
  }

  std::string path_;
  Database database_;
  Statement rows_;
  int step_ = SQLITE_DONE;
  std::array<Value, kFile + 1> values_{};  // of the current row
  std::uint64_t rows_read_ = 0;
  std::uint64_t bytes_read_ = 0;
  std::uint64_t most_rows_ = 0;
  std::uint64_t most_bytes_ = 0;
  std::optional<std::uint64_t> last_row_id_;
};

}  // namespace

std::unique_ptr<Manifest> OpenManifestDb(const std::string& path) {
  return std::make_unique<DatabaseReader>(path);
}
