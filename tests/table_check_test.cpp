#include "common/utils/table_check.h"

#include <glog/logging.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace {

using Status = TableCheckStatus;

struct CloseDatabase {
  void operator()(sqlite3* db) const {
    EXPECT_EQ(sqlite3_close(db), SQLITE_OK);
  }  // refuses while a statement lives
};
using Database = std::unique_ptr<sqlite3, CloseDatabase>;

Database Open(const char* schema) {
  sqlite3* db = nullptr;
  EXPECT_EQ(sqlite3_open(":memory:", &db), SQLITE_OK);
  EXPECT_EQ(sqlite3_exec(db, schema, nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(db);
  return Database(db);
}

constexpr char kSchema[] =
    "create table Files(fileID, domain); create table Full(a); insert into Full values (1); create table "
    "\"my-table\"(a);"
    "create table \"O'Hara\"(a); create view Seen as select 1 as a; create index Sorted on Files(domain);";

// What glog is told while it lives.
class LogSink final : public google::LogSink {
 public:
  LogSink() { google::AddLogSink(this); }
  ~LogSink() override { google::RemoveLogSink(this); }
  void send(google::LogSeverity severity, const char* full_filename, const char* /*base*/, int line,
            const struct tm*, const char* message, std::size_t length) override {
    EXPECT_EQ(severity, google::GLOG_ERROR);
    EXPECT_STREQ(full_filename, "src/common/utils");
    lines.push_back(std::to_string(line) + ": " + std::string(message, length));
  }
  std::vector<std::string> lines;
};

struct Case {
  const char* table;
  const char* column;
  Status table_status;
  Status column_status;
  std::optional<std::string> line;
};

const Case kCases[] = {
    {"Files", nullptr, Status::Found, Status::NotChecked, {}},
    {"Files", "fileID", Status::Found, Status::Found, {}},
    {"Files", "FILEID", Status::Found, Status::Found, {}},
    {"Full", "a", Status::Found, Status::Found, {}},
    {"Full", "*", Status::Found, Status::Found, {}},
    {"Full", "", Status::Found, Status::Found, {}},
    {"files", "fileID", Status::NotFound, Status::NotChecked, {}},
    {"Missing", "a", Status::NotFound, Status::NotChecked, {}},
    {"Seen", "a", Status::NotFound, Status::NotChecked, {}},
    {"Sorted", nullptr, Status::NotFound, Status::NotChecked, {}},
    {"", nullptr, Status::NotFound, Status::NotChecked, {}},
    {nullptr, "a", Status::NotFound, Status::NotChecked, {}},
    {"O''Hara", nullptr, Status::Found, Status::NotChecked, {}},
    {"Full' or '1' = '1", "a) from Full where a = 2 group by (a", Status::Found, Status::PrepareFailed,
     "402: OPEN STMT SQL: select count(a) from Full where a = 2 group by (a) from Full' or '1' = '1 RES: 1"},
    {"Full", "a) from Full where a = 2 group by a; --", Status::Found, Status::NotFound, {}},
    {"Files", "size", Status::Found, Status::PrepareFailed,
     "402: OPEN STMT SQL: select count(size) from Files RES: 1"},
    {"my-table", "a", Status::Found, Status::PrepareFailed,
     "402: OPEN STMT SQL: select count(a) from my-table RES: 1"},
    {"O'Hara", "a", Status::PrepareFailed, Status::NotChecked,
     "377: OPEN STMT SQL: SELECT sql FROM sqlite_master WHERE type='table' AND name ='O'Hara' RES: 1"}};

TEST(TableCheck, TellsTablesAndColumns) {
  const Database db = Open(kSchema);
  for (const Case& c : kCases) {
    const LogSink sink;
    const TableCheckResult result = Utils::TableCheck(db.get(), c.table, c.column);
    const std::string name = c.table != nullptr ? c.table : "null";
    EXPECT_EQ(result.table, c.table_status) << name;
    EXPECT_EQ(result.column, c.column_status) << name;
    EXPECT_EQ(sink.lines, c.line ? std::vector{*c.line} : std::vector<std::string>{}) << name;
    EXPECT_EQ(sqlite3_next_stmt(db.get(), nullptr), nullptr) << name;
  }
}

TEST(TableCheck, ReportsSqlitesAnswerToNoConnection) {
  const LogSink sink;
  const TableCheckResult result = Utils::TableCheck(nullptr, "Files", "fileID");
  EXPECT_EQ(result.table, Status::PrepareFailed);
  EXPECT_EQ(result.column, Status::NotChecked);
  EXPECT_EQ(sink.lines,
            std::vector<std::string>{"377: OPEN STMT SQL: SELECT sql FROM sqlite_master WHERE type='table' "
                                     "AND name ='Files' RES: 21"});
}

// A step that fails is no row: the authorizer lets both queries be prepared, the interrupt stops each at its
// step.
TEST(TableCheck, TakesAFailingStepForNotFound) {
  const Database db = Open(kSchema);
  sqlite3_progress_handler(
      db.get(), 1, [](void*) { return 1; }, nullptr);
  const LogSink sink;
  EXPECT_EQ(Utils::TableCheck(db.get(), "Full", "a").table, Status::NotFound);
  EXPECT_TRUE(sink.lines.empty());
}

// Never two statements at once: while the second query is prepared, the first statement is gone.
TEST(TableCheck, FinalizesBeforeItPreparesAgain) {
  const Database db = Open(kSchema);
  struct Seen {
    sqlite3* db;
    std::vector<bool> statement_alive;
  } seen{db.get(), {}};
  const auto note = [](void* context, int action, const char*, const char*, const char*, const char*) {
    auto& noted = *static_cast<Seen*>(context);
    if (action == SQLITE_SELECT)
      noted.statement_alive.push_back(sqlite3_next_stmt(noted.db, nullptr) != nullptr);
    return SQLITE_OK;
  };
  ASSERT_EQ(sqlite3_set_authorizer(db.get(), note, &seen), SQLITE_OK);
  EXPECT_EQ(Utils::TableCheck(db.get(), "Full", "a").column, Status::Found);
  const std::vector<bool> alive = seen.statement_alive;
  ASSERT_EQ(alive.size(), 2u);
  EXPECT_EQ(alive[0], alive[1]);
}

}  // namespace
