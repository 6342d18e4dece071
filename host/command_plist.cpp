#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <nlohmann/json.hpp>

#include "command.h"
#include "common/plist_util.h"
#include "common/text_or_empty.h"
#include "output.h"
#include "owners.h"
#include "terminal_text.h"

namespace {

// Sorted by key. Of equal keys the last counts, as for most readers of XML lists.
using Json = nlohmann::json;

struct Options {
  std::string file;
  bool json = false;
};

// ReadPlist returns null without a reason.
std::string WhyUnreadable(const std::string& file) {
  struct stat status {};
  if (::stat(file.c_str(), &status) != 0) return std::strerror(errno);
  if (S_ISDIR(status.st_mode)) return "is a folder";
  if (!S_ISREG(status.st_mode)) return "is not a regular file";
  if (status.st_size == 0) return "is empty";
  if (Stream(std::fopen(file.c_str(), "rb")) == nullptr) return std::strerror(errno);
  return "is not a property list";
}

// The text between the tags of a leaf's XML, without white space; empty for <date/>. In every release of
// libplist only the XML has dates more than 68 years from 2001, the sign of an integer, and data as base64.
std::string XmlContents(plist_t leaf) {
  const std::string xml = Libplist::Encoded(leaf);
  const std::size_t root = xml.find("<plist");
  if (root == std::string::npos) return "";
  const std::size_t start = xml.find('>', xml.find('<', root + 1)) + 1;
  std::string contents = xml.substr(start, xml.find('<', start) - start);
  std::erase_if(contents, [](char c) { return c == '\n' || c == '\t'; });
  return contents;
}

Json IntegerAsJson(plist_t node) {
  const std::uint64_t value = PlistUtil::GetIntegerValue(node);
  const bool negative = value > INT64_MAX && XmlContents(node).starts_with('-');
  return negative ? Json(static_cast<std::int64_t>(value)) : Json(value);
}

// libplist writes years before 1000 with fewer digits, and no text for a date without a calendar year.
Json DateAsJson(plist_t node) {
  constexpr std::size_t kYearDigits = 4;
  std::string date = XmlContents(node);
  if (date.empty()) return nullptr;
  const std::size_t year = date.front() == '-' ? 1 : 0;
  const std::size_t digits = date.find('-', year) - year;
  if (digits < kYearDigits) date.insert(year, kYearDigits - digits, '0');
  return date;
}

Json AsJson(plist_t node);

Json ArrayAsJson(plist_t node) {
  Json array = Json::array();
  plist_array_iter position = nullptr;
  plist_array_new_iter(node, &position);
  const Libplist::Text owner(static_cast<char*>(position));
  for (plist_t item = nullptr; plist_array_next_item(node, position, &item), item != nullptr;) {
    array.push_back(AsJson(item));
  }
  return array;
}

Json DictionaryAsJson(plist_t node) {
  Json dictionary = Json::object();
  plist_dict_iter position = nullptr;
  plist_dict_new_iter(node, &position);
  const Libplist::Text owner(static_cast<char*>(position));
  for (;;) {
    char* text = nullptr;
    plist_t item = nullptr;
    plist_dict_next_item(node, position, &text, &item);
    const Libplist::Text key(text);
    if (item == nullptr) return dictionary;
    dictionary[key.get()] = AsJson(item);
  }
}

// Recurses for each level; ReadPlist bounds these.
Json AsJson(plist_t node) {
  switch (plist_get_node_type(node)) {
    case PLIST_DICT:
      return DictionaryAsJson(node);
    case PLIST_ARRAY:
      return ArrayAsJson(node);
    case PLIST_STRING:
      return TextOrEmpty(plist_get_string_ptr(node, nullptr));
    case PLIST_BOOLEAN: {
      std::uint8_t value = 0;
      plist_get_bool_val(node, &value);
      return value != 0;
    }
    case PLIST_UINT:
      return IntegerAsJson(node);
    case PLIST_REAL: {
      double value = 0;
      plist_get_real_val(node, &value);
      return value;
    }
    case PLIST_DATE:
      return DateAsJson(node);
    case PLIST_DATA:
      return XmlContents(node);
    case PLIST_UID:
      return {{"CF$UID", PlistUtil::GetDictOrUidIntegerValue(node, nullptr)}};
    default:
      return nullptr;
  }
}

// Keeps the lines and their indentation.
std::string EscapedLines(std::string_view text) {
  std::string escaped;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::size_t indentation = std::min(text.find_first_not_of('\t'), end);
    escaped += text.substr(0, indentation);
    escaped += TerminalText::Escaped(text.substr(indentation, end - indentation)) + '\n';
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return escaped;
}

ExitStatus Run(const Options& options) {
  const Plist plist(PlistUtil::ReadPlist(options.file.c_str()));
  if (plist == nullptr) throw Failure(options.file + ": " + WhyUnreadable(options.file));
  Output output;
  if (options.json) {
    output.Write(AsJson(plist.get()).dump(-1, ' ', true, Json::error_handler_t::replace) + '\n');
  } else {
    const std::string xml = Libplist::Encoded(plist.get());
    if (xml.empty()) throw Failure(options.file + ": cannot be written as XML");
    output.Write(TerminalWidth(STDOUT_FILENO) != 0 ? EscapedLines(xml) : xml);
  }
  output.Flush();
  return ExitStatus::Fine;
}

}  // namespace

void AddPlist(CLI::App& app, ExitStatus& status) {
  const auto options = std::make_shared<Options>();
  CLI::App* const command =
      app.add_subcommand("plist", "Print a property list of either encoding, as XML or JSON");
  command->footer("Example:\n  $ hostutil plist Info.plist --json");
  command->add_option("FILE", options->file, "the property list")->required();
  command->add_flag("--json", options->json, "JSON");
  command->callback([options, &status] { status = Run(*options); });
}
