// Reads the manifest database without changing anything: no lock file, no journal and no write-ahead log
// appears or disappears beside it. The database may be made to harm its reader, so the connection is stripped
// of everything that reading one plain table does not need.

#include <fcntl.h>
#include <fmt/format.h>
#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "common/utils.h"
#include "failure.h"
#include "keyed_archive.h"
#include "manifest.h"
#include "terminal_text.h"

namespace {

struct CloseDatabase {
  void operator()(sqlite3* database) const { sqlite3_close_v2(database); }
};
using Database = std::unique_ptr<sqlite3, CloseDatabase>;

struct FinalizeStatement {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Statement = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;

constexpr char kTable[] = "Files";
constexpr char kColumns[] = "PRAGMA table_xinfo(Files)";
constexpr char kRows[] = "SELECT fileID, domain, relativePath, flags, file FROM Files";
constexpr char kLastRow[] = "SELECT max(rowid) FROM Files";
enum Column : int { kId, kDomain, kPath, kFlags, kFile };

// A way of opening that takes no locks. A log can then only be read by one who claims the whole database,
// which also keeps the log's index in memory.
constexpr char kWithoutLocks[] = "mode=ro&vfs=unix-none";
constexpr char kClaimWhole[] = "PRAGMA locking_mode=EXCLUSIVE";

constexpr int kLockPatience = 2000;        // milliseconds
constexpr int kLongestValue = 16 << 20;    // bytes; a longer one ends the reading
constexpr int kLongestText = 65534;        // bytes, as in the record file of the other generation
constexpr std::uint64_t kSmallestRow = 8;  // bytes: two of pointer, two of prefix, a header for five columns

// The size of a file that may stand beside the database; none when there is no such file.
std::optional<std::uint64_t> CompanionSize(const std::string& path) {
  const FileStatus status = StatusOf(path);
  if (status.kind == FileKind::Absent) return std::nullopt;
  if (status.kind != FileKind::Regular) throw Failure(path + ": is not a regular file");
  return status.size;
}

// Whether the database's header asks for a write-ahead log.
bool UsesLog(const std::string& path) {
  constexpr std::size_t kReadVersion = 19;
  std::array<char, kReadVersion + 1> header{};
  const Stream stream(std::fopen(path.c_str(), "rb"));
  if (stream == nullptr) throw Failure(path + ": " + std::strerror(errno));
  return std::fread(header.data(), 1, header.size(), stream.get()) == header.size() &&
         header[kReadVersion] == 2;
}

// Whether a connection of any program is at work with the log: each holds a lock on this byte of its index.
bool IsInUse(const std::string& index) {
  constexpr off_t kConnectionByte = 128;
  const Stream stream(std::fopen(index.c_str(), "rb"));
  if (stream == nullptr) return false;
  struct flock lock {};
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET;
  lock.l_start = kConnectionByte;
  lock.l_len = 1;
  return ::fcntl(::fileno(stream.get()), F_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

// How to open the database so that its folder stays as it is. An ordinary reader of a database with a
// write-ahead log makes that log and its index when they are missing, and leaves them behind.
std::string OpenParameters(const std::string& path) {
  const std::uint64_t journal = CompanionSize(path + "-journal").value_or(0);
  const std::optional<std::uint64_t> log = CompanionSize(path + "-wal");
  const bool index = CompanionSize(path + "-shm").has_value();
  if (!log && !UsesLog(path)) return "mode=ro";
  if (journal != 0) throw Failure(path + ": holds an unfinished transaction");
  if (log.value_or(0) == 0) return "mode=ro&immutable=1";                // all is in the database itself
  if (index && IsInUse(path + "-shm")) return "mode=ro&readonly_shm=1";  // share the index
  return kWithoutLocks;                                                  // an index of our own, in memory
}

std::string Uri(const std::string& path, const std::string& parameters) {
  std::string uri = path.front() == '/' ? "file://" : "file:";
  for (const char byte : path) {
    const bool plain = byte != '%' && byte != '?' && byte != '#';
    uri += plain ? std::string(1, byte) : fmt::format("%{:02x}", static_cast<unsigned char>(byte));
  }
  return uri + '?' + parameters;
}

// Lets a statement read the table, its columns and its last row, and the schema and count, which
// Utils::TableCheck asks for; `by` names a view or trigger.
int Authorize(void* /*unused*/, int action, const char* first, const char* second, const char* /*database*/,
              const char* by) {
  if (by != nullptr) return SQLITE_DENY;
  switch (action) {
    case SQLITE_SELECT:
      return SQLITE_OK;
    case SQLITE_READ:
      return Utils::CompareI(first, kTable) == 0 || Utils::CompareI(first, "sqlite_master") == 0
                 ? SQLITE_OK
                 : SQLITE_DENY;
    case SQLITE_FUNCTION:
      return Utils::CompareI(second, "count") == 0 || Utils::CompareI(second, "max") == 0 ? SQLITE_OK
                                                                                          : SQLITE_DENY;
    case SQLITE_PRAGMA:
      return Utils::CompareI(first, "table_xinfo") == 0 ? SQLITE_OK : SQLITE_DENY;
    default:
      return SQLITE_DENY;
  }
}

// While it is on, a statement is given up when it takes far more work than reading a schema or descending
// once to the last row. Linked pages can make a scan endless.
void LimitWork(sqlite3* database, bool on) {
  constexpr int kMostInstructions = 100000;
  sqlite3_progress_handler(
      database, on ? kMostInstructions : 0, [](void*) { return 1; }, nullptr);
}

// A schema comes with the file: views, triggers, virtual tables and functions in it can compute for ever or
// reach what they should not.
void Restrict(sqlite3* database) {
  constexpr std::array<std::pair<int, int>, 4> kSettings = {{{SQLITE_DBCONFIG_DEFENSIVE, 1},
                                                             {SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0},
                                                             {SQLITE_DBCONFIG_ENABLE_VIEW, 0},
                                                             {SQLITE_DBCONFIG_ENABLE_TRIGGER, 0}}};
  for (const auto& [setting, value] : kSettings) sqlite3_db_config(database, setting, value, nullptr);
  sqlite3_db_config(database, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
  sqlite3_drop_modules(database, nullptr);
  sqlite3_limit(database, SQLITE_LIMIT_LENGTH, kLongestValue);
  sqlite3_busy_timeout(database, kLockPatience);
  sqlite3_set_authorizer(database, Authorize, nullptr);
  LimitWork(database, true);
}

// Why the rows cannot be read, after the statement for them failed with `code`.
std::string Reason(sqlite3* database, int code) {
  const std::string message = sqlite3_errmsg(database);
  switch (code & 0xFF) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      return "is locked by another program";
    case SQLITE_NOTADB:
      return "is no database";
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

std::optional<EntryKind> KindOf(sqlite3_int64 flags) {
  switch (flags) {
    case 1:
      return EntryKind::File;
    case 2:
      return EntryKind::Directory;
    case 4:
      return EntryKind::Link;
    default:
      return std::nullopt;
  }
}

class DatabaseReader final : public Manifest {
 public:
  explicit DatabaseReader(const std::string& path) : path_(path) {
    const std::string parameters = OpenParameters(path);
    const std::string uri = Uri(path, parameters);
    sqlite3* opened = nullptr;
    const int code = sqlite3_open_v2(uri.c_str(), &opened, SQLITE_OPEN_READONLY | SQLITE_OPEN_URI, nullptr);
    database_.reset(opened);
    if (code != SQLITE_OK) throw Failure(fmt::format("{}: {}", path, sqlite3_errstr(code)));
    if (parameters == kWithoutLocks) sqlite3_exec(opened, kClaimWhole, nullptr, nullptr, nullptr);
    Restrict(opened);
    RefuseComputedColumns();
    rows_ = Prepare(kRows);
    // The first step takes the lock: what cannot be read at all shows here, before anything is printed.
    step_ = sqlite3_step(rows_.get());
    if (step_ != SQLITE_ROW && step_ != SQLITE_DONE) Fail(step_);
    LimitWork(opened, false);
    // Pages, cells and overflow chains can be shared, to be passed again and again. No honest table has more
    // rows or bytes than this; texts in UTF-16 grow by half when they become UTF-8.
    const std::uint64_t size = StatusOf(path).size + StatusOf(path + "-wal").size;
    most_rows_ = size / kSmallestRow;
    most_bytes_ = 2 * size;
  }

  Next Read(Entry& entry) override {
    entry = {};
    if (step_ == SQLITE_DONE) return Next::End;
    if (step_ != SQLITE_ROW || rows_read_ == most_rows_ || bytes_read_ > most_bytes_) {
      step_ = SQLITE_DONE;
      return Next::BrokenOff;
    }
    const bool usable = ReadRow(entry);
    ++rows_read_;
    bytes_read_ += RowBytes();
    step_ = sqlite3_step(rows_.get());
    return usable ? Next::Entry : Next::Damaged;
  }

  Position Where() override {
    if (!last_row_id_) last_row_id_ = LastRowId();
    return {rows_read_, *last_row_id_};
  }

  bool TwoLevel() const override { return true; }

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

  // A computed column can stand for a computation that never ends.
  void RefuseComputedColumns() {
    constexpr int kHidden = 6;
    const Statement columns = Prepare(kColumns);
    int code = SQLITE_OK;
    while ((code = sqlite3_step(columns.get())) == SQLITE_ROW) {
      if (sqlite3_column_int(columns.get(), kHidden) == 0) continue;
      throw Failure(path_ + ": has a computed column in its table Files");
    }
    if (code != SQLITE_DONE) Fail(code);
  }

  // About the number of rows, found by one descent; 0 where that is not to be had. To count them could take
  // for ever.
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

  // The bytes of all that can be long in the row.
  std::uint64_t RowBytes() {
    std::uint64_t bytes = 0;
    for (int column = kId; column <= kFile; ++column) {
      const int type = sqlite3_column_type(rows_.get(), column);
      if (type != SQLITE_TEXT && type != SQLITE_BLOB) continue;
      bytes += static_cast<std::uint64_t>(sqlite3_column_bytes(rows_.get(), column));
    }
    return bytes;
  }

  // Whether the column holds a text that can be one of a file.
  bool ReadText(Column column, std::string& text) {
    if (sqlite3_column_type(rows_.get(), column) != SQLITE_TEXT) return false;
    const unsigned char* const bytes = sqlite3_column_text(rows_.get(), column);
    const int length = sqlite3_column_bytes(rows_.get(), column);
    if (bytes == nullptr || length > kLongestText) return false;
    text.assign(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(length));
    return text.find('\0') == std::string::npos;
  }

  bool ReadDescription(Entry& entry) {
    const int type = sqlite3_column_type(rows_.get(), kFile);
    if (type == SQLITE_NULL) return true;
    if (type != SQLITE_BLOB) return false;
    const void* const bytes = sqlite3_column_blob(rows_.get(), kFile);
    const int length = sqlite3_column_bytes(rows_.get(), kFile);
    return DecodeKeyedArchive(static_cast<const char*>(bytes), static_cast<std::size_t>(length), entry);
  }

  bool ReadRow(Entry& entry) {
    // Each is read, whatever the one before it holds: they name the damaged row.
    const bool id = ReadText(kId, entry.id);
    const bool domain = ReadText(kDomain, entry.domain);
    const bool path = ReadText(kPath, entry.path);
    if (!id || !domain || !path || sqlite3_column_type(rows_.get(), kFlags) != SQLITE_INTEGER) return false;
    const std::optional<EntryKind> kind = KindOf(sqlite3_column_int64(rows_.get(), kFlags));
    if (!kind) return false;
    entry.kind = *kind;
    return ReadDescription(entry);
  }

  std::string path_;
  Database database_;
  Statement rows_;
  int step_ = SQLITE_DONE;
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
