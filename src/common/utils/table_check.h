// Whether an SQLite database that the host has opened holds a table, and a column in it.
//
//   TableCheckResult found = Utils::TableCheck(db, "Files", "fileID");
//   if (found.column == TableCheckStatus::Found) ...

#pragma once

#include <cstdint>

#include "common/export.h"

// The answer to one query.
enum class TableCheckStatus : std::int32_t {
  Found = 0,          // the query gave a row
  NotFound = 1,       // it gave none, or failed while running (a busy or locked database, say)
  NotChecked = 2,     // the column was not asked for, or there is no table to ask
  PrepareFailed = 3,  // SQLite refused the query, and one line was logged
};

// What TableCheck found.
struct TableCheckResult {
  TableCheckStatus table;   // of the table
  TableCheckStatus column;  // of the column in it
};

namespace Utils {

// Looks for a table of exactly that name (case counts; views, indexes and triggers do not), then, when
// `column` is not null and the table is there, whether `column` can be selected from it; PrepareFailed is the
// usual answer for a column that the table lacks. `db` is an open sqlite3 connection and stays the caller's;
// each statement is finalized before the next step. A query that SQLite refuses is logged through glog as one
// ERROR line. Throws std::bad_alloc.
//
// The names go into the queries as they are, unquoted and unescaped: never pass a name from outside. A null
// table counts as the empty name; for a null connection SQLite's own refusal is reported.
HOSTUTIL_EXPORT TableCheckResult TableCheck(void* db, const char* table, const char* column);

}  // namespace Utils
