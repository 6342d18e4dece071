#include "common/utils/table_check.h"

#include <glog/logging.h>
#include <sqlite3.h>

#include "support/temporary_folder.h"
#include "support/testing.h"

namespace {

using enum TableCheckStatus;
using Database = std::unique_ptr<sqlite3, int (*)(sqlite3*)>;

// Records the line that is logged while it lives.
struct LogSink final : google::LogSink {
  LogSink() { google::AddLogSink(this); }
  ~LogSink() override { google::RemoveLogSink(this); }
  void send(google::LogSeverity severity, const char* file, const char* /*base*/, int line, const struct tm*,
            const char* message, std::size_t length) override {
    EXPECT_EQ(severity, google::GLOG_ERROR);
    EXPECT_STREQ(file, "src/common/utils");
    logged += std::to_string(line) + ' ' + std::string(message, length);
  }
  std::string logged;
};

struct Check {
  const char* table;
  const char* column;
  TableCheckResult result;
  std::string logged;
};

void Expect(const Database& db, const Check& check) {
  SCOPED_TRACE(testing::PrintToString(check.table) + testing::PrintToString(check.column));
  const LogSink sink;
  const TableCheckResult result = Utils::TableCheck(db.get(), check.table, check.column);
  EXPECT_EQ(result.table, check.result.table);
  EXPECT_EQ(result.column, check.result.column);
  EXPECT_EQ(sink.logged, check.logged);
  EXPECT_EQ(db == nullptr ? nullptr : sqlite3_next_stmt(db.get(), nullptr), nullptr) << "not finalized";
}

Database Open(const char* path, const char* sql) {
  sqlite3* db = nullptr;
  EXPECT_EQ(sqlite3_open(path, &db), SQLITE_OK);
  EXPECT_EQ(sqlite3_exec(db, sql, nullptr, nullptr, nullptr), SQLITE_OK);
  return {db, &sqlite3_close};
}

// The authorizer, which SQLite asks while it prepares a statement: rejects it while another one lives.
int OneStatement(void* context, int, const char*, const char*, const char*, const char*) {
  auto* const db = static_cast<sqlite3*>(context);
  sqlite3_stmt* const statement = sqlite3_next_stmt(db, nullptr);  // perhaps the one in preparation
  return statement == nullptr || sqlite3_next_stmt(db, statement) == nullptr ? SQLITE_OK : SQLITE_DENY;
}

// The numbers are part of the interface.
static_assert(Found == TableCheckStatus{0} && NotFound == TableCheckStatus{1} &&
              NotChecked == TableCheckStatus{2} && PrepareFailed == TableCheckStatus{3});

TEST(TableCheck, FindsTablesAndColumnsAndLogsWhatSqliteRejects) {
  const Database db = Open(":memory:", R"(
      create table Files(fileID); create table Full(a); insert into Full values (1);
      create table "my-table"(a); create table "O'Hara"(a); create view Seen as select 1 as a;
      create index Sorted on Files(fileID);)");
  EXPECT_EQ(sqlite3_set_authorizer(db.get(), OneStatement, db.get()), SQLITE_OK);
  const std::string query = "377 OPEN STMT SQL: SELECT sql FROM sqlite_master WHERE type='table' AND name ='";
  const Check checks[] = {
      {"Files", nullptr, {Found, NotChecked}, ""},
      {"Files", "fileID", {Found, Found}, ""},
      {"Full", "a", {Found, Found}, ""},
      {"Full", "", {Found, Found}, ""},
      {"O''Hara", nullptr, {Found, NotChecked}, ""},
      {"files", "fileID", {NotFound, NotChecked}, ""},
      {"Seen", "a", {NotFound, NotChecked}, ""},
      {"Sorted", nullptr, {NotFound, NotChecked}, ""},
      {nullptr, "a", {NotFound, NotChecked}, ""},
      {"Full", "a) from Full where a = 2 group by a; --", {Found, NotFound}, ""},
      {"Files", "size", {Found, PrepareFailed}, "402 OPEN STMT SQL: select count(size) from Files RES: 1"},
      {"my-table", "a", {Found, PrepareFailed}, "402 OPEN STMT SQL: select count(a) from my-table RES: 1"},
      {"O'Hara", "a", {PrepareFailed, NotChecked}, query + "O'Hara' RES: 1"}};
  for (const Check& check : checks) Expect(db, check);
  Expect({nullptr, &sqlite3_close}, {"T", "a", {PrepareFailed, NotChecked}, query + "T' RES: 21"});
}

// A step that fails finds nothing and logs nothing. With the schema in memory, a query of a database that
// another connection has locked is prepared, and fails when it runs.
TEST(TableCheck, FindsNothingInALockedDatabase) {
  const TemporaryFolder folder;
  const Database db = Open(folder.Path("db").c_str(), "create table Files(fileID)");
  const Database locking = Open(folder.Path("db").c_str(), "select * from Files");
  Expect(db, {"Files", "fileID", {Found, Found}, ""});
  EXPECT_EQ(sqlite3_exec(locking.get(), "begin exclusive", nullptr, nullptr, nullptr), SQLITE_OK);
  Expect(db, {"Files", "fileID", {NotFound, NotChecked}, ""});
}

}  // namespace
