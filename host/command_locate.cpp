#include <fmt/format.h>

#include "backup_folder.h"
#include "command.h"
#include "common/utils.h"
#include "file_status.h"
#include "output.h"
#include "terminal_text.h"

namespace {

struct Options {
  std::string root;
  std::string domain;
  std::string path;
  bool two_level = true;
  bool create = false;
};

ExitStatus Run(const Options& options) {
  const std::string id = Utils::CalcFileID(options.domain.c_str(), options.path.c_str());
  const std::string place = Utils::ConcatBackupFilePath(WithSeparator(options.root).c_str(), id.c_str(),
                                                        options.two_level, options.create);
  // ConcatBackupFilePath does not report a folder that it could not create.
  const std::string folder = place.substr(0, place.rfind('/'));
  if (options.create && options.two_level && StatusOf(folder).kind != FileKind::Folder) {
    throw Failure(folder + ": cannot be created");
  }
  Output output;
  output.Write(fmt::format("Identifier  {}\nStored at   {}\n", TerminalText::Escaped(id),
                           TerminalText::Escaped(place)));
  output.Flush();
  return ExitStatus::Fine;
}

}  // namespace

void AddLocate(CLI::App& app, ExitStatus& status) {
  const auto options = std::make_shared<Options>();
  CLI::App* const command =
      app.add_subcommand("locate", "Print a file's identifier and where a backup stores it");
  command->footer("Example:\n  $ hostutil locate backup HomeDomain Documents/note-7.txt");
  command->add_option("ROOT", options->root, "the backup's folder")->required();
  command->add_option("DOMAIN", options->domain, "the file's domain")->required();
  command->add_option("PATH", options->path, "the file's path in the domain")->required();
  AddLayout(command, options->two_level);
  command->add_flag("--create", options->create, "make the folder that stores the file");
  command->callback([options, &status] { status = Run(*options); });
}
