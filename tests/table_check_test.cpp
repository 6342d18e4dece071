#include "common/utils/table_check.h"

#include <glog/logging.h>
#include <sqlite3.h>

#include "support/testing.h"

namespace {

// What glog is told while it lives, each line behind a blank.
class LogSink final : public google::LogSink {
 public:
  LogSink() { google::AddLogSink(this); }
  ~LogSink() override { google::RemoveLogSink(this); }
  void send(google::LogSeverity severity, const char* full_filename, const char* /*base*/, int line,
            const struct tm*, const char* message, std::size_t length) override {
    EXPECT_EQ(severity, google::GLOG_ERROR);
    EXPECT_STREQ(full_filename, "src/common/utils");
    lines += ' ' + std::to_string(line) + ": " + std::string(message, length);
  }
  std::string lines;
};

// The codes for the table and for the column, and what is logged.
std::string Checked(sqlite3* db, const char* table, const char* column) {
  const LogSink sink;
  const TableCheckResult result = Utils::TableCheck(db, table, column);
  return std::to_string(static_cast<int>(result.table)) + std::to_string(static_cast<int>(result.column)) +
         sink.lines;
}

// Lets nothing be prepared while another statement lives. The one in the making may count already.
int OneAtATime(void* context, int, const char*, const char*, const char*, const char*) {
  auto* const db = static_cast<sqlite3*>(context);
  sqlite3_stmt* const statement = sqlite3_next_stmt(db, nullptr);
  return statement == nullptr || sqlite3_next_stmt(db, statement) == nullptr ? SQLITE_OK : SQLITE_DENY;
}

TEST(TableCheck, TellsTablesAndColumns) {
  sqlite3* db = nullptr;
  EXPECT_EQ(sqlite3_open(":memory:", &db), SQLITE_OK);
  const char* const schema =
      "create table Files(fileID); create table Full(a); insert into Full values (1); create table "
      "\"my-table\"(a); create table \"O'Hara\"(a); create view Seen as select 1 as a; create index Sorted "
      "on Files(fileID);";
  EXPECT_EQ(sqlite3_exec(db, schema, nullptr, nullptr, nullptr), SQLITE_OK);
  EXPECT_EQ(sqlite3_set_authorizer(db, OneAtATime, db), SQLITE_OK);
  const char* const cases[][3] = {
      {"Files", nullptr, "02"},  {"Files", "fileID", "00"}, {"Full", "a", "00"}, {"Full", "", "00"},
      {"files", "fileID", "12"}, {"Missing", "a", "12"},    {"Seen", "a", "12"}, {"Sorted", nullptr, "12"},
      {nullptr, "a", "12"},      {"O''Hara", nullptr, "02"}};
  for (const auto& [table, column, expected] : cases)
    EXPECT_EQ(Checked(db, table, column), expected) << testing::PrintToString(table);
  EXPECT_EQ(Checked(db, "Full", "a) from Full where a = 2 group by a; --"), "01");
  EXPECT_EQ(Checked(db, "Files", "size"), "03 402: OPEN STMT SQL: select count(size) from Files RES: 1");
  EXPECT_EQ(Checked(db, "my-table", "a"), "03 402: OPEN STMT SQL: select count(a) from my-table RES: 1");
  const std::string refused =
      "32 377: OPEN STMT SQL: SELECT sql FROM sqlite_master WHERE type='table' AND name ='";
  EXPECT_EQ(Checked(db, "O'Hara", "a"), refused + "O'Hara' RES: 1");
  EXPECT_EQ(Checked(nullptr, "Files", "fileID"), refused + "Files' RES: 21");

  // A step that fails is no row: both queries can be prepared, the interrupt stops each at its step.
  sqlite3_progress_handler(
      db, 1, [](void*) { return 1; }, nullptr);
  EXPECT_EQ(Checked(db, "Full", "a"), "12");
  EXPECT_EQ(sqlite3_close(db), SQLITE_OK);  // which SQLite refuses while a statement lives
}

}  // namespace
