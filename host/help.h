// The help text of the program and of each command, and what to suggest for a misspelt command.

#pragma once

#include <CLI/CLI.hpp>
#include <string>

// A formatter for CLI::App::formatter_fn. Releases of CLI11 differ in headings, columns and wrapping; this
// one depends on none of them. Mode All adds every command's arguments and options.
std::string FormatHelp(const CLI::App* app, const std::string& name, CLI::AppFormatMode mode);

// The command of `app` with the smallest edit distance to `name`; empty when more than half of it differs.
std::string NearestCommand(const CLI::App& app, const std::string& name);
