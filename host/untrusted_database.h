// Opens an SQLite database without changing anything: no lock file, journal or write-ahead log is created or
// removed. The database may be malicious, so only plain reads of one table are allowed.

#pragma once

#include <string>

#include "owners.h"

// `table` is the only table that statements may read; it must outlive the connection. Work is limited. Throws
// Failure when the database cannot be opened.
Database OpenUntrustedDatabase(const std::string& path, const char* table);

// While on, a statement is interrupted when it takes far more work than reading a schema or seeking the last
// row. Page cycles can make a scan endless.
void LimitWork(sqlite3* database, bool on);
