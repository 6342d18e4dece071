// hostutil: reads, checks, searches and compares device backups, and copies files out of them.

#include <fcntl.h>
#include <glog/logging.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "command.h"
#include "help.h"
#include "output.h"
#include "platform/autorelease_pool.h"
#include "terminal_text.h"

namespace {

constexpr char kFooter[] =
    "Exit status:\n"
    "  0                   fine\n"
    "  1                   the backup has problems, or the backups differ\n"
    "  2                   usage or unreadable input\n"
    "\n"
    "Examples:\n"
    "  $ hostutil sample backup --files 500\n"
    "  $ hostutil inspect backup\n"
    "  $ hostutil list backup --domain HomeDomain --match '.*\\.plist'\n"
    "  $ hostutil extract backup files --domain HomeDomain\n"
    "  $ hostutil diff backup newer-backup\n"
    "  $ hostutil locate backup HomeDomain Documents/note-7.txt\n"
    "  $ hostutil plist backup/Info.plist";

// Help and version are results: standard output, with its error checks.
ExitStatus Print(const std::string& text) {
  Output output;
  output.Write(text);
  output.Flush();
  return ExitStatus::Fine;
}

// An unknown command, before CLI11 reports it as an unexpected argument.
void CheckCommand(const CLI::App& app, int argc, const char* const* argv) {
  if (argc < 2) throw Failure("a command is required; hostutil --help lists the commands");
  const std::string name = argv[1];
  if (!name.empty() && name.front() == '-') return;
  const auto commands =
      app.get_subcommands([&](const CLI::App* command) { return command->get_name() == name; });
  if (!commands.empty()) return;
  const std::string nearest = NearestCommand(app, name);
  const std::string suggestion = nearest.empty() ? "" : "did you mean '" + nearest + "'? ";
  throw Failure("no command '" + name + "'; " + suggestion + "hostutil --help lists the commands");
}

ExitStatus Run(int argc, const char* const* argv) {
  CLI::App app("Check, search, compare and extract device backups", "hostutil");
  app.formatter_fn(FormatHelp);
  app.set_help_flag("-h,--help", "print this help");
  app.set_version_flag("--version", "hostutil " HOSTUTIL_VERSION, "print the version");
  app.footer(kFooter);
  ExitStatus status = ExitStatus::Fine;
  for (AddCommand* const add : {AddInspect, AddList, AddExtract, AddDiff, AddLocate, AddPlist, AddSample}) {
    add(app, status);
  }
  // After the commands, which would inherit it.
  app.set_help_all_flag("--help-all", "print the help of every command");
  app.require_subcommand(1);
  CheckCommand(app, argc, argv);
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    return Print(app.help());
  } catch (const CLI::CallForAllHelp&) {
    return Print(app.help("", CLI::AppFormatMode::All));
  } catch (const CLI::CallForVersion& version) {
    return Print(std::string(version.what()) + '\n');
  } catch (const CLI::ParseError& error) {
    const auto commands = app.get_subcommands();
    const std::string name = commands.empty() ? "" : commands.front()->get_name() + ' ';
    throw Failure(std::string(error.what()) + "; hostutil " + name + "--help shows the usage");
  }
  return status;
}

// Escaped, so that the message stays one line.
ExitStatus Fail(std::string_view message) {
  const std::string line = "hostutil: " + TerminalText::Escaped(message) + '\n';
  std::fputs(line.c_str(), stderr);
  return ExitStatus::Failed;
}

// If a standard descriptor is closed, the next file opened would take its number.
void OccupyStandardStreams() {
  for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
    if (::fcntl(stream, F_GETFD) < 0 && ::open("/dev/null", O_RDONLY) < 0) return;
  }
}

}  // namespace

int main(int argc, char** argv) {
  OccupyStandardStreams();
  ::signal(SIGXFSZ, SIG_IGN);  // exceeding a file-size limit then fails the write, as a full disk does
  FLAGS_minloglevel = google::NUM_SEVERITIES;  // the library's log lines would reach standard error
  ExitStatus status = ExitStatus::Failed;
  try {
    const AutoreleasePool pool;
    status = Run(argc, argv);
  } catch (const OutputFailure& failure) {
    if (failure.error != EPIPE) Fail(std::string("standard output: ") + std::strerror(failure.error));
  } catch (const std::bad_alloc&) {
    Fail("out of memory");
  } catch (const std::exception& error) {
    Fail(error.what());
  }
  return static_cast<int>(status);
}
