// Runs the program hostutil as a user does, and the backups that it is run on.

#pragma once

#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "support/temporary_folder.h"

struct ProgramResult {
  int status;  // as from the shell: 128 and the number for an end by a signal
  std::string out;
  std::string err;
};

// Where the program's streams go.
struct ProgramStreams {
  std::string out;               // a file to write to in place of collecting it
  bool out_closed_pipe = false;  // a pipe that nobody reads, with the signal for that ignored
  bool err_terminal = false;     // a terminal, whose text is collected
};

ProgramResult RunHostUtil(const std::vector<std::string>& arguments, const ProgramStreams& streams = {});

// A sample backup in a folder of its own, to be damaged.
class SampleBackup {
 public:
  explicit SampleBackup(const std::string& layout, int files = 40);

  std::string Path(const std::string& name = "") const { return folder_.Path("backup" + ("/" + name)); }
  std::string Stored(const std::string& domain, const std::string& path) const;
  std::string Root() const { return folder_.Path("backup"); }

  void Write(const std::string& name, const std::string& bytes) const {
    folder_.Write("backup/" + name, bytes);
  }
  void Sql(const std::string& statements) const;

  // Every name in the backup with its bytes (of what is no regular file, its name alone).
  std::map<std::string, std::string> Snapshot() const;

 private:
  TemporaryFolder folder_;
  bool two_level_;
};

// Runs `statements` on a database; fails the test when one fails.
void RunSql(const std::string& database, const std::string& statements);
