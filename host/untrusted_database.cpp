#include "untrusted_database.h"

#include <fcntl.h>
#include <fmt/format.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <optional>

#include "common/utils.h"
#include "failure.h"
#include "file_status.h"

namespace {

// Without locks SQLite reads a write-ahead log only in EXCLUSIVE mode, which keeps the log's index in memory.
constexpr char kWithoutLocks[] = "mode=ro&vfs=unix-none";
constexpr char kExclusive[] = "PRAGMA locking_mode=EXCLUSIVE";

constexpr int kBusyTimeout = 2000;       // milliseconds
constexpr int kLongestValue = 16 << 20;  // bytes; SQLITE_TOOBIG beyond

// The size of a journal, log or index of the database; none when it does not exist.
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

// Whether any process has the log open: each connection locks this byte of the log's index.
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

// URI parameters that leave the folder unchanged. By default SQLite creates a missing write-ahead log and its
// index, and leaves them behind.
std::string OpenParameters(const std::string& path) {
  const std::uint64_t journal = CompanionSize(path + "-journal").value_or(0);
  const std::optional<std::uint64_t> log = CompanionSize(path + "-wal");
  const bool index = CompanionSize(path + "-shm").has_value();
  if (!log && !UsesLog(path)) return "mode=ro";
  if (journal != 0) throw Failure(path + ": holds an unfinished transaction");
  if (log.value_or(0) == 0) return "mode=ro&immutable=1";                // the log is empty
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

// Allows what reading `table` needs, and the schema and count() for Utils::TableCheck. `by` names a view or
// trigger.
int Authorize(void* table, int action, const char* first, const char* second, const char* /*database*/,
              const char* by) {
  if (by != nullptr) return SQLITE_DENY;
  switch (action) {
    case SQLITE_SELECT:
      return SQLITE_OK;
    case SQLITE_READ:
      return Utils::CompareI(first, static_cast<const char*>(table)) == 0 ||
                     Utils::CompareI(first, "sqlite_master") == 0
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

// The schema is untrusted: its views, triggers, virtual tables and functions could loop or access other
// files.
void Restrict(sqlite3* database, const char* table) {
  constexpr std::array<std::pair<int, int>, 4> kSettings = {{{SQLITE_DBCONFIG_DEFENSIVE, 1},
                                                             {SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0},
                                                             {SQLITE_DBCONFIG_ENABLE_VIEW, 0},
                                                             {SQLITE_DBCONFIG_ENABLE_TRIGGER, 0}}};
  for (const auto& [setting, value] : kSettings) sqlite3_db_config(database, setting, value, nullptr);
  sqlite3_db_config(database, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
  sqlite3_drop_modules(database, nullptr);
  sqlite3_limit(database, SQLITE_LIMIT_LENGTH, kLongestValue);
  sqlite3_busy_timeout(database, kBusyTimeout);
  sqlite3_set_authorizer(database, Authorize, const_cast<char*>(table));
  LimitWork(database, true);
}

}  // namespace

void LimitWork(sqlite3* database, bool on) {
  constexpr int kMostInstructions = 100000;
  sqlite3_progress_handler(
      database, on ? kMostInstructions : 0, [](void*) { return 1; }, nullptr);
}

Database OpenUntrustedDatabase(const std::string& path, const char* table) {
  const std::string parameters = OpenParameters(path);
  const std::string uri = Uri(path, parameters);
  sqlite3* opened = nullptr;
  // Without SQLite's own mutex, which takes a tenth of a scan: callers use a connection in one thread at a
  // time.
  const int code = sqlite3_open_v2(uri.c_str(), &opened,
                                   SQLITE_OPEN_READONLY | SQLITE_OPEN_URI | SQLITE_OPEN_NOMUTEX, nullptr);
  Database database(opened);
  if (code != SQLITE_OK) throw Failure(fmt::format("{}: {}", path, sqlite3_errstr(code)));
  if (parameters == kWithoutLocks) sqlite3_exec(opened, kExclusive, nullptr, nullptr, nullptr);
  Restrict(opened, table);
  return database;
}
