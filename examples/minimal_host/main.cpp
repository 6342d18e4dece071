// A host in thirty lines: reads a backup's Info.plist, addresses a file of the backup, checks a table.
//
//   minimal_host INFO_PLIST

#include <sqlite3.h>

#include <iostream>
#include <string>

#include "common/plist_util.h"
#include "common/utils.h"
#include "platform/autorelease_pool.h"

int main(int argument_count, char** arguments) {
  const AutoreleasePool pool;  // one on every thread that calls the library
  const char* const path = argument_count > 1 ? arguments[1] : "Info.plist";

  const plist_t info = PlistUtil::ReadPlist(path);
  std::cout << path << (info != nullptr ? " is a property list\n" : " is no property list\n");
  PlistUtil::PrintPlist(info);
  plist_free(info);

  const std::string id = Utils::CalcFileID("HomeDomain", "Library/notes.db");
  const std::string root = Utils::GetParentDir(path);
  std::cout << Utils::ConcatBackupFilePath(root.c_str(), id.c_str(), true, false) << '\n';

  sqlite3* db = nullptr;
  if (sqlite3_open(":memory:", &db) == SQLITE_OK) {
    sqlite3_exec(db, "CREATE TABLE Files(fileID TEXT)", nullptr, nullptr, nullptr);
    const TableCheckResult found = Utils::TableCheck(db, "Files", "fileID");
    std::cout << "Files.fileID " << (found.column == TableCheckStatus::Found ? "found\n" : "missing\n");
  }
  sqlite3_close(db);
}
