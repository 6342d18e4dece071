// Whether an SQLite database that the host has opened holds a table, and a column in it.
//
//   TableCheckResult found = Utils::TableCheck(db, "Files", "fileID");
//   if (found.column == TableCheckStatus::Found) ...

#pragma once

#include <cstdint>

#include "common/export.h"

// The outcome of one query.
enum class TableCheckStatus : std::int32_t {
  Found = 0,          // the query returned a row
  NotFound = 1,       // it returned none, or failed while running (a busy or locked database, say)
  NotChecked = 2,     // there was no query: no column was given, or the table was not found
  PrepareFailed = 3,  // SQLite rejected the query, and one line was logged
};

// The outcomes of both queries.
struct TableCheckResult {
  TableCheckStatus table;   // never NotChecked
  TableCheckStatus column;  // NotChecked unless the table was found and a column was given
};

namespace Utils {

// Whether there is a table of exactly this name (case counts; views, indexes and triggers do not) and, if so
// and if `column` is not null, whether `column` can be selected from it. A column that the table lacks is
// usually PrepareFailed. `db` is an open sqlite3 connection, which stays the caller's; no statement outlives
// the call. A query that SQLite rejects is logged through glog as one ERROR line. Throws std::bad_alloc.
//
// The names are put into the queries unquoted and unescaped: never pass a name from outside. A null table
// counts as the empty name; SQLite rejects a null connection.
HOSTUTIL_EXPORT TableCheckResult TableCheck(void* db, const char* table, const char* column);

}  // namespace Utils
