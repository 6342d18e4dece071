// Calls Utils::TableCheck with any names on a small database in memory. The input is the table's name and,
// after a newline, the column's; without a newline the column is null.

#include <glog/logging.h>
#include <sqlite3.h>

#include <set>
#include <string>

#include "common/utils/table_check.h"
#include "fuzz/check.h"

namespace {

// SQLite stops queries that a name injects and that would run for ever or exhaust memory.
constexpr int kMostSteps = 20'000;
constexpr sqlite3_int64 kMostMemory = 64 << 20;
constexpr int kLongestValue = 1 << 20;

const std::set<std::string_view> kTables = {"Files", "Properties", "my-table"};

class LogKeeper final : public google::LogSink {
 public:
  void send(google::LogSeverity /*severity*/, const char* /*file*/, const char* /*base*/, int /*line*/,
            const std::tm* /*time*/, const char* message, std::size_t length) override {
    last.assign(message, length);
    ++lines;
  }
  std::string last;
  int lines = 0;
};

class Database {
 public:
  Database() {
    google::InitGoogleLogging("table_check_fuzzer");
    for (int severity = 0; severity < google::NUM_SEVERITIES; ++severity) {
      google::SetLogDestination(severity, "");
    }
    google::SetStderrLogging(google::NUM_SEVERITIES);
    google::AddLogSink(&log);

    sqlite3_hard_heap_limit64(kMostMemory);
    sqlite3_open(":memory:", &db);
    sqlite3_exec(db,
                 "CREATE TABLE Files(fileID TEXT PRIMARY KEY, domain TEXT, relativePath TEXT, flags INTEGER);"
                 "INSERT INTO Files VALUES('0a', 'HomeDomain', 'Library/notes.db', 1);"
                 "CREATE TABLE Properties(key TEXT, value BLOB);"
                 "CREATE TABLE \"my-table\"(a);"
                 "CREATE VIEW Names AS SELECT domain FROM Files",
                 nullptr, nullptr, nullptr);
    sqlite3_limit(db, SQLITE_LIMIT_LENGTH, kLongestValue);
    sqlite3_progress_handler(
        db, kMostSteps, [](void*) { return 1; }, nullptr);
  }

  LogKeeper log;
  sqlite3* db = nullptr;
};

bool CanOccur(const TableCheckResult& result) {
  using enum TableCheckStatus;
  if (result.table == Found) return true;
  return (result.table == NotFound || result.table == PrepareFailed) && result.column == NotChecked;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static Database* const database = new Database;  // never destroyed
  std::string_view rest = Fuzz::Input(data, size);
  const bool with_column = rest.find('\n') != std::string_view::npos;
  const Fuzz::Text table(Fuzz::TakeLine(rest));
  const Fuzz::Text column(rest);

  database->log.lines = 0;
  const TableCheckResult result =
      Utils::TableCheck(database->db, table.c_str(), with_column ? column.c_str() : nullptr);

  Fuzz::Require(CanOccur(result), "a pair of states that may occur");
  Fuzz::Require(sqlite3_next_stmt(database->db, nullptr) == nullptr, "every statement is finalized");
  const bool rejected =
      result.table == TableCheckStatus::PrepareFailed || result.column == TableCheckStatus::PrepareFailed;
  Fuzz::Require(database->log.lines == (rejected ? 1 : 0), "one line for a rejected query, else none");
  if (rejected) {
    Fuzz::Require(database->log.last.starts_with("OPEN STMT SQL: ") &&
                      database->log.last.find(" RES: ") != std::string::npos,
                  "the line has the query and the code");
  }
  const std::string_view name = table.c_str();
  if (name.find('\'') == std::string_view::npos) {
    Fuzz::Require(
        result.table == (kTables.contains(name) ? TableCheckStatus::Found : TableCheckStatus::NotFound),
        "a plain name is found when there is such a table");
  }
  return 0;
}
