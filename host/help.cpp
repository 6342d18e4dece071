#include "help.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <numeric>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using Rows = std::vector<std::pair<std::string, std::string>>;

// A heading with rows in two columns; empty without rows.
std::string Section(std::string_view heading, const Rows& rows) {
  constexpr std::size_t kNameWidth = 18;  // wider than every name so far
  std::string text = rows.empty() ? "" : fmt::format("\n{}:\n", heading);
  for (const auto& [name, description] : rows) {
    text += fmt::format("  {:{}}  {}\n", name, kNameWidth, description);
  }
  return text;
}

// "-h, --help" or "--match REGEX". The type's name is followed by the validator's after a colon.
std::string NameOf(const CLI::Option& option) {
  std::vector<std::string> names;
  for (const std::string& name : option.get_snames()) names.push_back('-' + name);
  for (const std::string& name : option.get_lnames()) names.push_back("--" + name);
  const std::string type = option.get_type_name();
  std::string text = fmt::format("{}", fmt::join(names, ", "));
  return option.get_type_size() == 0 ? text : text + ' ' + type.substr(0, type.find(':'));
}

struct Parameters {
  std::string usage;
  Rows arguments;
  Rows options;
};

Parameters ParametersOf(const CLI::App& app, const std::string& name) {
  Parameters found{name + " [OPTIONS]", {}, {}};
  for (const CLI::Option* const option : app.get_options({})) {
    if (option->get_positional()) {
      found.usage += ' ' + option->get_single_name();
      found.arguments.emplace_back(option->get_single_name(), option->get_description());
    } else {
      found.options.emplace_back(NameOf(*option), option->get_description());
    }
  }
  return found;
}

// The Levenshtein distance, one row of its table at a time.
std::size_t EditDistance(std::string_view from, std::string_view to) {
  std::vector<std::size_t> row(to.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < from.size(); ++i) {
    std::size_t diagonal = std::exchange(row[0], i + 1);
    for (std::size_t j = 0; j < to.size(); ++j) {
      const std::size_t replaced = diagonal + (from[i] == to[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
    }
  }
  return row.back();
}

}  // namespace

std::string FormatHelp(const CLI::App* app, const std::string& name, CLI::AppFormatMode mode) {
  const Parameters own = ParametersOf(*app, name);
  Rows commands;
  std::string every_command;
  for (const CLI::App* const command : app->get_subcommands({})) {
    commands.emplace_back(command->get_name(), command->get_description());
    Parameters its = ParametersOf(*command, command->get_name());
    its.arguments.insert(its.arguments.end(), its.options.begin() + 1, its.options.end());  // without --help
    every_command += Section(its.usage, its.arguments);
  }
  return fmt::format("Usage: {}{}\n\n{}.\n{}{}{}{}\n{}\n", own.usage, commands.empty() ? "" : " COMMAND",
                     app->get_description(), Section("Arguments", own.arguments),
                     Section("Options", own.options), Section("Commands", commands),
                     mode == CLI::AppFormatMode::All ? every_command : "", app->get_footer());
}

std::string NearestCommand(const CLI::App& app, const std::string& name) {
  std::string nearest;
  std::size_t least = std::string::npos;
  for (const CLI::App* const command : app.get_subcommands({})) {
    const std::size_t distance = EditDistance(name, command->get_name());
    if (distance >= least || 2 * distance > command->get_name().size()) continue;
    least = distance;
    nearest = command->get_name();
  }
  return nearest;
}
