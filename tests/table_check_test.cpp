#include "common/utils/table_check.h"

#include <glog/logging.h>
#include <sqlite3.h>

#include "support/temporary_folder.h"
#include "support/testing.h"

namespace {

using enum TableCheckStatus;

using Lines = std::vector<std::string>;

// Records the lines that are logged while it lives.
class LogSink final : public google::LogSink {
 public:
  LogSink() { google::AddLogSink(this); }
  ~LogSink() override { google::RemoveLogSink(this); }
  void send(google::LogSeverity severity, const char* full_filename, const char* /*base*/, int line,
            const struct tm*, const char* message, std::size_t length) override {
    EXPECT_EQ(severity, google::GLOG_ERROR);
    EXPECT_STREQ(full_filename, "src/common/utils");
    lines.push_back(std::to_string(line) + " " + std::string(message, length));
  }
  Lines lines;
};

void ExpectCheck(sqlite3* db, const char* table, const char* column, const TableCheckResult& expected,
                 const Lines& lines = {}) {
  SCOPED_TRACE(testing::PrintToString(table));
  const LogSink sink;
  const TableCheckResult result = Utils::TableCheck(db, table, column);
  EXPECT_EQ(result.table, expected.table);
  EXPECT_EQ(result.column, expected.column);
  EXPECT_EQ(sink.lines, lines);
}

// The authorizer, which SQLite asks while it prepares a statement: rejects it while another one lives.
int OneStatement(void* context, int, const char*, const char*, const char*, const char*) {
  auto* const db = static_cast<sqlite3*>(context);
  sqlite3_stmt* const statement = sqlite3_next_stmt(db, nullptr);  // perhaps the one in preparation
  return statement == nullptr || sqlite3_next_stmt(db, statement) == nullptr ? SQLITE_OK : SQLITE_DENY;
}

class TableCheck : public testing::Test {
 protected:
  TableCheck() {
    EXPECT_EQ(sqlite3_open(":memory:", &db), SQLITE_OK);
    const char* const schema =
        "create table Files(fileID); create table Full(a); insert into Full values (1);"
        "create table \"my-table\"(a); create table \"O'Hara\"(a); create view Seen as select 1 as a;"
        "create index Sorted on Files(fileID);";
    EXPECT_EQ(sqlite3_exec(db, schema, nullptr, nullptr, nullptr), SQLITE_OK);
    EXPECT_EQ(sqlite3_set_authorizer(db, OneStatement, db), SQLITE_OK);
  }
  // SQLite refuses to close a database while it has a statement.
  ~TableCheck() override { EXPECT_EQ(sqlite3_close(db), SQLITE_OK); }

  sqlite3* db = nullptr;
};

TEST_F(TableCheck, FindsTablesAndColumns) {
  ExpectCheck(db, "Files", nullptr, {Found, NotChecked});
  ExpectCheck(db, "Files", "fileID", {Found, Found});
  ExpectCheck(db, "Full", "a", {Found, Found});
  ExpectCheck(db, "Full", "", {Found, Found});
  ExpectCheck(db, "O''Hara", nullptr, {Found, NotChecked});
  ExpectCheck(db, "files", "fileID", {NotFound, NotChecked});
  ExpectCheck(db, "Missing", "a", {NotFound, NotChecked});
  ExpectCheck(db, "Seen", "a", {NotFound, NotChecked});
  ExpectCheck(db, "Sorted", nullptr, {NotFound, NotChecked});
  ExpectCheck(db, nullptr, "a", {NotFound, NotChecked});
  ExpectCheck(db, "Full", "a) from Full where a = 2 group by a; --", {Found, NotFound});
}

TEST_F(TableCheck, LogsWhatSqliteRejects) {
  ExpectCheck(db, "Files", "size", {Found, PrepareFailed},
              {"402 OPEN STMT SQL: select count(size) from Files RES: 1"});
  ExpectCheck(db, "my-table", "a", {Found, PrepareFailed},
              {"402 OPEN STMT SQL: select count(a) from my-table RES: 1"});
  const std::string query = "377 OPEN STMT SQL: SELECT sql FROM sqlite_master WHERE type='table' AND name ='";
  ExpectCheck(db, "O'Hara", "a", {PrepareFailed, NotChecked}, {query + "O'Hara' RES: 1"});
  ExpectCheck(nullptr, "Files", "fileID", {PrepareFailed, NotChecked}, {query + "Files' RES: 21"});
}

// A step that fails finds nothing and logs nothing. With the schema in memory, a query of a database that
// another connection has locked is prepared, and fails when it runs.
TEST(TableCheckOfALockedDatabase, FindsNothing) {
  const TemporaryFolder folder;
  sqlite3* db = nullptr;
  sqlite3* locking = nullptr;
  EXPECT_EQ(sqlite3_open(folder.Path("db").c_str(), &db), SQLITE_OK);
  EXPECT_EQ(sqlite3_open(folder.Path("db").c_str(), &locking), SQLITE_OK);
  EXPECT_EQ(sqlite3_exec(db, "create table Files(fileID)", nullptr, nullptr, nullptr), SQLITE_OK);
  ExpectCheck(db, "Files", "fileID", {Found, Found});
  EXPECT_EQ(sqlite3_exec(locking, "begin exclusive", nullptr, nullptr, nullptr), SQLITE_OK);
  ExpectCheck(db, "Files", "fileID", {NotFound, NotChecked});
  EXPECT_EQ(sqlite3_close(locking), SQLITE_OK);
  EXPECT_EQ(sqlite3_close(db), SQLITE_OK);
}

}  // namespace
