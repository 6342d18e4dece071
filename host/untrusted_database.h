// Opens an SQLite database without changing anything: no lock file, journal or write-ahead log is created or
// removed. The database may be malicious, so only plain reads of one table are allowed.

#pragma once

#include <string>

#include "owners.h"

// `table` is the only table that statements may read; it must outlive the connection. Work is limited. Throws
// Failure when the database cannot be opened.
Database OpenUntrustedDatabase(const std::string& path, const char* table);

// While on, SQLite interrupts a statement that does far more work than reading a schema or seeking the last
// row, which a malicious file (a cycle of pages) can make endless. Off during the scan, which the caller
// bounds by rows and bytes.
void LimitWork(sqlite3* database, bool on);
