#include "support/program.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sqlite3.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

#include "common/utils.h"

namespace {

// The side of a new terminal that a program sees, and in `reader` the other one.
int OpenTerminal(int& reader) {
  reader = ::posix_openpt(O_RDWR | O_NOCTTY);
  if (reader < 0 || ::grantpt(reader) != 0 || ::unlockpt(reader) != 0) return -1;
  return ::open(::ptsname(reader), O_RDWR | O_NOCTTY);
}

int CreateFile(const std::string& path) {
  return ::open(path.c_str(), O_WRONLY | O_CREAT, 0600);
}

// A terminal tells the end of its text by a failure.
std::string ReadAll(int file) {
  std::string text;
  char block[4096];
  for (ssize_t count; (count = ::read(file, block, sizeof block)) > 0;) {
    text.append(block, static_cast<std::size_t>(count));
  }
  ::close(file);
  return text;
}

[[noreturn]] void Become(const std::vector<std::string>& arguments, int out, int err, bool ignore_pipe) {
  if (ignore_pipe) ::signal(SIGPIPE, SIG_IGN);
  ::dup2(out, STDOUT_FILENO);
  ::dup2(err, STDERR_FILENO);
  std::vector<char*> argv = {const_cast<char*>(HOSTUTIL_PROGRAM)};
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  ::execv(argv.front(), argv.data());
  ::_exit(127);
}

}  // namespace

ProgramResult RunHostUtil(const std::vector<std::string>& arguments, const ProgramStreams& streams) {
  const TemporaryFolder folder;
  int out = -1;
  if (streams.out_closed_pipe) {
    int ends[2] = {-1, -1};
    EXPECT_EQ(::pipe(ends), 0);
    ::close(ends[0]);
    out = ends[1];
  } else {
    out = CreateFile(streams.out.empty() ? folder.Path("out") : streams.out);
  }
  int terminal = -1;
  const int err = streams.err_terminal ? OpenTerminal(terminal) : CreateFile(folder.Path("err"));
  const pid_t child = ::fork();
  if (child == 0) Become(arguments, out, err, streams.out_closed_pipe);
  ::close(out);
  ::close(err);

  ProgramResult result{};
  if (streams.err_terminal) result.err = ReadAll(terminal);
  int status = 0;
  EXPECT_EQ(::waitpid(child, &status, 0), child);
  result.status = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
  if (streams.out.empty() && !streams.out_closed_pipe) result.out = ReadFile(folder.Path("out"));
  if (!streams.err_terminal) result.err = ReadFile(folder.Path("err"));
  return result;
}

SampleBackup::SampleBackup(const std::string& layout, int files) : two_level_(layout == "two-level") {
  const ProgramResult made =
      RunHostUtil({"sample", Root(), "--layout", layout, "--files", std::to_string(files)});
  EXPECT_EQ(made.status, 0) << made.err;
}

std::string SampleBackup::Stored(const std::string& domain, const std::string& path) const {
  const std::string id = Utils::CalcFileID(domain.c_str(), path.c_str());
  return Utils::ConcatBackupFilePath(Path().c_str(), id.c_str(), two_level_, false);
}

void SampleBackup::Sql(const std::string& statements) const {
  RunSql(Path("Manifest.db"), statements);
}

std::map<std::string, std::string> SampleBackup::Snapshot() const {
  std::map<std::string, std::string> files;
  for (const auto& file : std::filesystem::recursive_directory_iterator(Root())) {
    const bool regular = file.symlink_status().type() == std::filesystem::file_type::regular;
    files[file.path().string()] = regular ? ReadFile(file.path().string()) : "";
  }
  return files;
}

void RunSql(const std::string& database, const std::string& statements) {
  sqlite3* connection = nullptr;
  EXPECT_EQ(sqlite3_open(database.c_str(), &connection), SQLITE_OK);
  EXPECT_EQ(sqlite3_exec(connection, statements.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
      << sqlite3_errmsg(connection);
  sqlite3_close(connection);
}
