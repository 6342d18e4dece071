#include "support/program.h"

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/wait.h>

#include <memory>

#include "common/utils.h"

SampleBackup::SampleBackup(const std::string& layout, int files) {
  std::filesystem::create_directory(folder.Path("backup"));
  EXPECT_EQ(Run("hostutil sample . --layout " + layout + " --files " + std::to_string(files)).status, 0);
}

ProgramResult SampleBackup::Run(const std::string& line, const std::string& sql) const {
  sqlite3* connection = nullptr;
  if (!sql.empty()) {
    EXPECT_EQ(sqlite3_open(folder.Path("backup/Manifest.db").c_str(), &connection), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(connection, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK) << sql;
  }
  const std::unique_ptr<sqlite3, int (*)(sqlite3*)> closer(connection, sqlite3_close);
  std::string script = "cd '" + folder.Path("backup") + "' || exit; exec >../out 2>../err\n" +
                       "hostutil() { '" HOSTUTIL_PROGRAM "' \"$@\"; }\n";
  for (const auto& [name, path] : {std::pair("note", kNote), {"binary", kBinaryList}, {"xml", kXmlList}}) {
    script += name + ("=$(find . -name " + Utils::CalcFileID("HomeDomain", path.c_str())) + ")\n";
  }
  const int status = std::system((script + line).c_str());  // NOLINT(cert-env33-c): a user has a shell, too
  return {WEXITSTATUS(status), ReadFile(folder.Path("out")), ReadFile(folder.Path("err"))};
}

ProgramResult SampleBackup::Look(const std::string& line) const {
  const std::string before = Run("tar cf - . | cksum").out;
  ProgramResult result = Run(line);
  EXPECT_EQ(Run("tar cf - . | cksum").out, before);
  return result;
}
