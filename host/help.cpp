#include "help.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <numeric>
#include <string_view>
#include <utility>
#include <vector>

namespace {

// A heading with rows in two columns; empty without rows.
std::string Section(std::string_view heading, const std::vector<std::pair<std::string, std::string>>& rows) {
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

std::string FormatHelp(const CLI::App* app, const std::string& name, CLI::AppFormatMode /*mode*/) {
  std::vector<std::pair<std::string, std::string>> arguments;
  std::vector<std::pair<std::string, std::string>> options;
  std::vector<std::pair<std::string, std::string>> commands;
  std::string usage = "Usage: " + name + " [OPTIONS]";
  for (const CLI::Option* const option : app->get_options({})) {
    if (option->get_positional()) {
      usage += ' ' + option->get_single_name();
      arguments.emplace_back(option->get_single_name(), option->get_description());
    } else {
      options.emplace_back(NameOf(*option), option->get_description());
    }
  }
  for (const CLI::App* const command : app->get_subcommands({})) {
    commands.emplace_back(command->get_name(), command->get_description());
  }
  if (!commands.empty()) usage += " COMMAND";
  return fmt::format("{}\n\n{}.\n{}{}{}\n{}\n", usage, app->get_description(),
                     Section("Arguments", arguments), Section("Options", options),
                     Section("Commands", commands), app->get_footer());
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
