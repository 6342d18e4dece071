// Runs the program hostutil as a user does: from the shell, on a sample backup.

#pragma once

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include "common/utils.h"
#include "support/temporary_folder.h"

using testing::AllOf;
using testing::FieldsAre;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;

struct ProgramResult {
  int status;  // as the shell reports it: 128 plus the number of the signal that ended it
  std::string out;
  std::string err;
};

using Json = nlohmann::ordered_json;

inline const std::string kLayouts[] = {"two-level", "flat"};

// A failure whose one line holds `reason`, a regular expression.
inline auto IsFailure(const std::string& reason) {
  return FieldsAre(2, "", MatchesRegex("hostutil: [^\n]*" + reason + "[^\n]*\n"));
}

// The kind and the path of each problem.
inline std::vector<std::string> ProblemsOf(const Json& json) {
  std::vector<std::string> problems;
  for (const Json& problem : json["problems"])
    problems.push_back(problem["kind"].get<std::string>() + ' ' + problem["path"].get<std::string>());
  return problems;
}

// Three files of the sample, all in HomeDomain.
inline const std::string kNote = "Documents/note-7.txt";
inline const std::string kBinaryListPath = "Library/Preferences/com.example.app0.plist";
inline const std::string kXmlListPath = "Library/Preferences/com.example.app5.plist";

// A sample backup in a folder of its own, to be damaged.
struct SampleBackup {
  explicit SampleBackup(const std::string& layout, int files = 40) {
    std::filesystem::create_directory(folder.Path("backup"));
    EXPECT_EQ(Run("hostutil sample . --layout " + layout + " --files " + std::to_string(files)).status, 0);
  }

  // Runs a line of the shell in the backup's folder. In it `hostutil` is the program, `plain` is the program
  // without root's right to read everything, and $note, $binary and $xml are where the three files above are
  // stored. When there is `sql`, the line runs after it and while its connection to Manifest.db is still
  // open.
  ProgramResult Run(const std::string& line, const std::string& sql = "") const {
    sqlite3* connection = nullptr;
    if (!sql.empty()) {
      EXPECT_EQ(sqlite3_open(folder.Path("backup/Manifest.db").c_str(), &connection), SQLITE_OK);
      EXPECT_EQ(sqlite3_exec(connection, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK) << sql;
    }
    const std::unique_ptr<sqlite3, int (*)(sqlite3*)> closer(connection, sqlite3_close);
    std::string script = "cd '" + folder.Path("backup") + "' || exit; exec >../out 2>../err\n" +
                         "hostutil() { " HOSTUTIL_PROGRAM " \"$@\"; }\n" +
                         "drop() { [ $(id -u) != 0 ] || set -- setpriv " +
                         "--bounding-set=-dac_override,-dac_read_search \"$@\"; \"$@\"; }\n" +
                         "plain() { drop " HOSTUTIL_PROGRAM " \"$@\"; }\n";
    for (const auto& [name, path] :
         {std::pair("note", kNote), {"binary", kBinaryListPath}, {"xml", kXmlListPath}})
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

// A terminal, for what the program prints there.
class Terminal {
 public:
  Terminal() { EXPECT_EQ(::grantpt(master_) | ::unlockpt(master_), 0); }
  ~Terminal() { ::close(master_); }

  std::string Name() const { return ::ptsname(master_); }
  int descriptor() const { return master_; }

  // What was printed. The first call waits for it; the end of the last writer ends it.
  std::string Read() const {
    std::string all;
    char text[4096];
    for (ssize_t length; (length = ::read(master_, text, sizeof text)) > 0;)
      all.append(text, static_cast<std::size_t>(length));
    return all;
  }

 private:
  int master_ = ::posix_openpt(O_RDWR | O_NOCTTY);
};
