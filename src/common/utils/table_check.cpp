#include "common/utils/table_check.h"

#include <glog/logging.h>
#include <sqlite3.h>

#include <algorithm>
#include <climits>
#include <string>

#include "common/owners.h"
#include "common/text_or_empty.h"

namespace {

// The source location of the log lines, which hosts filter by.
constexpr char kLogFile[] = "src/common/utils";
constexpr int kSchemaQueryLine = 377;
constexpr int kColumnQueryLine = 402;

using Statement = Owners::Owner<sqlite3_stmt, sqlite3_finalize>;

TableCheckStatus Check(sqlite3* db, const std::string& sql, int log_line) {
  const int length = static_cast<int>(std::min<std::size_t>(sql.size(), INT_MAX));
  sqlite3_stmt* prepared = nullptr;
  const int refused = sqlite3_prepare(db, sql.c_str(), length, &prepared, nullptr);
  if (refused != SQLITE_OK) {
    // As a text: the stream would group the digits by the global locale.
    google::LogMessage(kLogFile, log_line, google::GLOG_ERROR).stream()
        << "OPEN STMT SQL: " << sql << " RES: " << std::to_string(refused);
    return TableCheckStatus::PrepareFailed;
  }
  const Statement statement(prepared);
  return sqlite3_step(statement.get()) == SQLITE_ROW ? TableCheckStatus::Found : TableCheckStatus::NotFound;
}

}  // namespace

TableCheckResult Utils::TableCheck(void* db, const char* table, const char* column) {
  table = TextOrEmpty(table);
  auto* const connection = static_cast<sqlite3*>(db);
  TableCheckResult result{TableCheckStatus::NotFound, TableCheckStatus::NotChecked};
  result.table = Check(
      connection, std::string("SELECT sql FROM sqlite_master WHERE type='table' AND name ='") + table + "'",
      kSchemaQueryLine);
  if (column == nullptr || result.table != TableCheckStatus::Found) return result;
  result.column =
      Check(connection, std::string("select count(") + column + ") from " + table, kColumnQueryLine);
  return result;
}
