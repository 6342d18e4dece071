// hostutil: reads, checks and searches a device backup.

#include <fcntl.h>
#include <glog/logging.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>

#include "commands.h"
#include "output.h"
#include "platform/autorelease_pool.h"
#include "terminal_text.h"

namespace {

constexpr char kExamples[] =
    "Examples:\n"
    "  hostutil sample backup --files 500\n"
    "  hostutil inspect backup\n"
    "  hostutil list backup --domain HomeDomain --match '.*\\.plist'\n"
    "  hostutil locate backup HomeDomain Documents/note-7.txt\n"
    "  hostutil plist backup/Info.plist\n"
    "\n"
    "Exit status: 0 fine, 1 the backup has problems, 2 usage or unreadable input.";

// The arguments of every command, and the one that was called.
struct Arguments {
  PlistOptions plist;
  LocateOptions locate;
  ListOptions list;
  InspectOptions inspect;
  SampleOptions sample;
  std::string layout = "two-level";
  std::function<ExitStatus()> command;

  bool TwoLevel() const { return layout == "two-level"; }
};

CLI::App* AddCommand(CLI::App& app, const char* name, const char* description, const std::string& example,
                     Arguments& arguments, std::function<ExitStatus()> run) {
  CLI::App* const command = app.add_subcommand(name, description);
  command->footer("Example:\n  hostutil " + example);
  command->callback([&arguments, run = std::move(run)] { arguments.command = run; });
  return command;
}

void AddLayout(CLI::App* command, Arguments& arguments) {
  command->add_option("--layout", arguments.layout, "two-level (the default) or flat")
      ->check(CLI::IsMember({"two-level", "flat"}))
      ->type_name("LAYOUT");
}

void AddCommands(CLI::App& app, Arguments& arguments) {
  CLI::App* command = AddCommand(
      app, "plist",
      "Print a property list of either encoding as XML, between the two lines that PrintPlist adds",
      "plist Info.plist", arguments, [&] { return RunPlist(arguments.plist); });
  command->add_option("FILE", arguments.plist.file, "the property list")->required()->type_name("");

  command = AddCommand(app, "locate", "Name a file's identifier and where a backup stores it",
                       "locate backup HomeDomain Documents/note-7.txt", arguments, [&] {
                         arguments.locate.two_level = arguments.TwoLevel();
                         return RunLocate(arguments.locate);
                       });
  command->add_option("ROOT", arguments.locate.root, "the backup's folder")->required()->type_name("");
  command->add_option("DOMAIN", arguments.locate.domain, "the file's domain")->required()->type_name("");
  command->add_option("PATH", arguments.locate.path, "the file's path in the domain")
      ->required()
      ->type_name("");
  AddLayout(command, arguments);
  command->add_flag("--create", arguments.locate.create, "make the folder that stores the file");

  command = AddCommand(app, "list", "List the files that a backup holds", "list backup --match '.*\\.plist'",
                       arguments, [&] { return RunList(arguments.list); });
  command->add_option("ROOT", arguments.list.root, "the backup's folder")->required()->type_name("");
  command->add_option("--match", arguments.list.match, "only paths that match as a whole")
      ->type_name("REGEX");
  command->add_option("--domain", arguments.list.domain, "only this domain")->type_name("DOMAIN");
  command->add_flag("--json", arguments.list.json, "one JSON object a line");

  command = AddCommand(app, "inspect", "Check a whole backup", "inspect backup --json", arguments,
                       [&] { return RunInspect(arguments.inspect); });
  command->add_option("ROOT", arguments.inspect.root, "the backup's folder")->required()->type_name("");
  command->add_flag("--json", arguments.inspect.json, "one JSON object");

  command = AddCommand(app, "sample", "Write a small backup to try the others on",
                       "sample backup --files 500", arguments, [&] {
                         arguments.sample.two_level = arguments.TwoLevel();
                         return RunSample(arguments.sample);
                       });
  command->add_option("DIR", arguments.sample.folder, "a folder that is new or empty")
      ->required()
      ->type_name("");
  command->add_option("--files", arguments.sample.files, "how many files (200)")
      ->check(CLI::Range(0, 10000000))
      ->type_name("N");
  AddLayout(command, arguments);
}

// Asked-for help and version go to standard output like any other result.
ExitStatus Print(const std::string& text) {
  Output output;
  output.Write(text);
  output.Flush();
  return ExitStatus::Fine;
}

ExitStatus Run(int argc, const char* const* argv) {
  CLI::App app("hostutil reads, checks and searches a device backup.", "hostutil");
  Arguments arguments;
  AddCommands(app, arguments);
  app.set_version_flag("--version", "hostutil " HOSTUTIL_VERSION);
  app.footer(kExamples);
  app.require_subcommand(0, 1);  // a misspelt command is better named than said to be missing
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    const auto called = app.get_subcommands();
    return Print(called.empty() ? app.help() : called.front()->help(app.get_name()));
  } catch (const CLI::CallForVersion& version) {
    return Print(std::string(version.what()) + '\n');
  } catch (const CLI::ParseError& error) {
    throw Failure(std::string(error.what()) + " (hostutil --help tells more)");
  }
  if (!arguments.command) throw Failure("which command? (hostutil --help names them)");
  return arguments.command();
}

// One line, whatever the message quotes.
ExitStatus Fail(std::string_view message) {
  const std::string line = "hostutil: " + TerminalText::Escaped(message) + '\n';
  std::fputs(line.c_str(), stderr);
  return ExitStatus::Failed;
}

// Without this a file that is opened could become standard output.
void OccupyStandardStreams() {
  for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
    if (::fcntl(stream, F_GETFD) < 0 && ::open("/dev/null", O_RDONLY) < 0) return;
  }
}

}  // namespace

int main(int argc, char** argv) {
  OccupyStandardStreams();
  // Dates are looked up by the file anyway; named here, it is not looked for again at each of them.
  ::setenv("TZ", ":/etc/localtime", 0);
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
