// Whether a database has a table and a column.

#include "common/utils/table_check.h"

#include <sqlite3.h>

#include "expect.h"

int main() {
  sqlite3* db = nullptr;
  Expect(sqlite3_open(":memory:", &db) == SQLITE_OK);
  sqlite3_exec(db, "CREATE TABLE Files(fileID TEXT)", nullptr, nullptr, nullptr);

  bool has_column = false;
  TableCheckResult found = Utils::TableCheck(db, "Files", "fileID");
  if (found.column == TableCheckStatus::Found) has_column = true;
  Expect(has_column);
  sqlite3_close(db);
}
