#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "command.h"
#include "extraction.h"
#include "signals.h"
#include "terminal_text.h"

namespace {

using Json = nlohmann::ordered_json;

struct Options {
  ExtractOptions extract;
  SelectionOptions selection;
  bool json = false;
};

std::string AsJson(const ExtractOptions& options, const Extracted& extracted) {
  const Json json = {{"root", options.root},
                     {"destination", options.destination},
                     {"files", extracted.files},
                     {"folders", extracted.folders},
                     {"links", extracted.links},
                     {"bytes", extracted.bytes},
                     {"problems", ProblemsAsJson(extracted.problems)},
                     {"elapsed", extracted.elapsed}};
  return json.dump(-1, ' ', true, Json::error_handler_t::replace) + '\n';
}

std::string AsText(const ExtractOptions& options, const Extracted& extracted) {
  using namespace TerminalText;
  const Screen screen = Screen::OfStandardOutput();
  std::string text = ProblemsAsText(extracted.problems, extracted.truncated, screen);
  if (text.empty()) text = screen.Green("No problems") + '\n';
  text += fmt::format("\n{}\n", screen.Bold(options.dry_run ? "Would be extracted" : "Extracted"));
  const auto field = [&](std::string_view name, std::string_view value) {
    text += ElidedEnd(PaddedRight(name, 18) + Escaped(value), screen.width) + '\n';
  };
  field("From", options.root);
  field("To", options.destination);
  field("Files", fmt::format("{} ({})", Count(extracted.files), Size(extracted.bytes)));
  field("Folders", Count(extracted.folders));
  field("Links", Count(extracted.links) + ", not copied");
  field("Time taken", extracted.elapsed);
  return text;
}

ExitStatus RunUninterrupted(const Options& options) {
  Selection selection(options.selection);
  const Extracted extracted = Extract(options.extract, selection);
  Output output;
  output.Write(options.json ? AsJson(options.extract, extracted) : AsText(options.extract, extracted));
  output.Flush();
  const ExitStatus omissions = selection.ReportOmissions();
  return extracted.problems.empty() ? omissions : ExitStatus::Problems;
}

ExitStatus Run(const Options& options) {
  const Interruption interruption;
  try {
    return RunUninterrupted(options);
  } catch (const Interrupted& interrupted) {
    EndBySignal(interrupted.signal);
    throw;  // the signal is blocked
  }
}

}  // namespace

void AddExtract(CLI::App& app, ExitStatus& status) {
  const auto options = std::make_shared<Options>();
  CLI::App* const command =
      app.add_subcommand("extract", "Copy the files of a backup out of it, to DEST/DOMAIN/PATH");
  command->footer("Example:\n  $ hostutil extract backup files --domain HomeDomain --match 'Documents/.*'");
  command->add_option("ROOT", options->extract.root, "the backup's folder")->required();
  command->add_option("DEST", options->extract.destination, "a folder that is new or empty")->required();
  AddSelection(command, options->selection);
  command->add_flag("--dry-run", options->extract.dry_run, "write nothing, say what would be done");
  command->add_flag("--json", options->json, "one JSON object");
  command->callback([options, &status] { status = Run(*options); });
}
