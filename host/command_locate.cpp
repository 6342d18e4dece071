#include <fmt/format.h>

#include "backup_files.h"
#include "commands.h"
#include "common/utils.h"
#include "output.h"
#include "terminal_text.h"

ExitStatus RunLocate(const LocateOptions& options) {
  const std::string id = Utils::CalcFileID(options.domain.c_str(), options.path.c_str());
  const std::string place = Utils::ConcatBackupFilePath(WithSeparator(options.root).c_str(), id.c_str(),
                                                        options.two_level, options.create);
  // Whether the folder could be made is told to nobody, so look.
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
