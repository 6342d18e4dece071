// Runs the program hostutil as a user does: from the shell, on a sample backup.

#pragma once

#include <sqlite3.h>
#include <sys/wait.h>

#include "common/utils.h"
#include "support/temporary_folder.h"

struct ProgramResult {
  int status;  // as the shell tells it: 128 and the number for an end by a signal
  std::string out;
  std::string err;
};

// Three files of the sample, all in HomeDomain.
inline const std::string kNote = "Documents/note-7.txt";
inline const std::string kBinaryList = "Library/Preferences/com.example.app0.plist";
inline const std::string kXmlList = "Library/Preferences/com.example.app5.plist";

// A sample backup in a folder of its own, to be damaged.
struct SampleBackup {
  explicit SampleBackup(const std::string& layout, int files = 40) {
    std::filesystem::create_directory(folder.Path("backup"));
    EXPECT_EQ(Run("hostutil sample . --layout " + layout + " --files " + std::to_string(files)).status, 0);
  }

  // Runs a line of the shell in the backup's folder. In it `hostutil` is the program, and $note, $binary and
  // $xml are where the three files above are stored. When there is `sql`, the line runs after it and while
  // its connection to Manifest.db is still open.
  ProgramResult Run(const std::string& line, const std::string& sql = "") const {
    sqlite3* connection = nullptr;
    if (!sql.empty()) {
      EXPECT_EQ(sqlite3_open(folder.Path("backup/Manifest.db").c_str(), &connection), SQLITE_OK);
      EXPECT_EQ(sqlite3_exec(connection, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK) << sql;
    }
    const std::unique_ptr<sqlite3, int (*)(sqlite3*)> closer(connection, sqlite3_close);
    std::string script = "cd '" + folder.Path("backup") + "' || exit; exec >../out 2>../err\n" +
                         "hostutil() { " HOSTUTIL_PROGRAM " \"$@\"; }\n";
    for (const auto& [name, path] : {std::pair("note", kNote), {"binary", kBinaryList}, {"xml", kXmlList}})
      script += name + ("=$(find . -name " + Utils::CalcFileID("HomeDomain", path.c_str())) + ")\n";
    const int status = std::system((script + line).c_str());
    return {WEXITSTATUS(status), ReadFile(folder.Path("out")), ReadFile(folder.Path("err"))};
  }

  // Runs a line that must leave the folder as it is, with all its names, kinds, times and bytes.
  ProgramResult Look(const std::string& line) const {
    const std::string before = Run("tar cf - . | cksum").out;
    ProgramResult result = Run(line);
    EXPECT_EQ(Run("tar cf - . | cksum").out, before);
    return result;
  }

  TemporaryFolder folder;  // holds the backup in its folder backup
};
