// The commands of the program. A command is one file, command_NAME.cpp, whose function AddNAME declares its
// options and runs it:
//
//   void AddTouch(CLI::App& app, ExitStatus& status) {
//     const auto options = std::make_shared<Options>();
//     CLI::App* const command = app.add_subcommand("touch", "Set the time of a file");
//     command->footer("Example:\n  $ hostutil touch FILE");
//     command->add_option("FILE", options->file, "the file")->required();
//     command->callback([options, &status] { status = Run(*options); });
//   }
//
// A new one is added to the declaration below and to the list in main.cpp.

#pragma once

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <string>
#include <thread>

#include "failure.h"
#include "selection.h"

// Adds the command to `app`; when the arguments name it, parsing them runs it and sets `status`.
using AddCommand = void(CLI::App& app, ExitStatus& status);

AddCommand AddDiff, AddExtract, AddInspect, AddList, AddLocate, AddPlist, AddSample;

// Adds the option --layout, which sets `two_level`.
inline void AddLayout(CLI::App* command, bool& two_level) {
  command
      ->add_option_function<std::string>(
          "--layout", [&two_level](const std::string& name) { two_level = name == "two-level"; },
          "two-level (the default) or flat")
      ->check(CLI::IsMember({"two-level", "flat"}))
      ->type_name("LAYOUT");
}

// Adds the option --jobs; `jobs` is set in any case.
inline void AddJobs(CLI::App* command, std::size_t& jobs) {
  jobs = std::max(std::thread::hardware_concurrency(), 1U);
  command->add_option("--jobs", jobs, "threads, 1 to 256; by default one for each processor core")
      ->check(CLI::Range(1, 256))
      ->type_name("N");
}

// Adds the options --match and --domain.
inline void AddSelection(CLI::App* command, SelectionOptions& options) {
  command->add_option("--match", options.match, "only paths that match as a whole")->type_name("REGEX");
  command->add_option("--domain", options.domain, "only this domain")->type_name("DOMAIN");
}
