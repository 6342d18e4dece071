#include "support/every_function.h"

#include <sqlite3.h>

#include <concepts>
#include <functional>
#include <regex>

#include "common/big_endian_bit_converter.h"
#include "common/plist_util.h"
#include "common/utils.h"
#include "platform/autorelease_pool.h"
#include "support/plists.h"
#include "support/temporary_folder.h"

namespace {

using namespace BigEndianBitConverter;
using namespace PlistUtil;
using namespace Utils;

// Too long for a string's internal buffer, so that every copy allocates.
constexpr char kPath[] =
    "/a folder with a long name/another one/a file with a long name.and a long extension";
const std::string kFolder = "/a folder with a long name/another one/";
const std::string kName = "a file with a long name.and a long extension";
const std::string kLong = "a text that is longer than a string object itself";

// A list of two texts.
const std::string kBinaryList = BinaryList({"\xA2\1\2", "Qa", "Qb"});

// A text whose entities are decoded before libplist parses it.
const std::string kEntities = "<string>" + Times(200, "&amp;") + "</string>";

struct Inside {
  Inside() { inside_library_call = true; }
  ~Inside() { inside_library_call = false; }
};

// REQUIRES: `call` allocates only in the library.
template <typename Call>
auto Within(Call call) {
  return Inside(), call();
}

// A result as text. Blocks and nodes are freed, as the caller of the library has to.
struct Text {
  static std::string Of(std::string text) { return text; }
  static std::string Of(std::integral auto number) { return std::to_string(number); }
  static std::string Of(plist_t node) { return Libplist::Node(node) != nullptr ? "node" : "null"; }
  template <typename Byte>
  static std::string Of(Byte* block) {
    return Take(reinterpret_cast<char*>(block)).value_or("null");
  }
};

template <typename Function, typename... Arguments>
auto Call(Function function, Arguments... arguments) {
  return [=] { return Text::Of(Within([&] { return function(arguments...); })); };
}

template <typename Function>
auto OnFile(Function function, std::string contents) {
  return [=] {
    const TemporaryFolder folder;
    return Call(function, folder.Write("a.plist", contents).c_str())();
  };
}

// `before` after `change`; a call that throws must leave it unchanged.
template <typename Change>
auto Changed(const std::string& before, Change change) {
  return [=] {
    std::string text = before;
    try {
      Within([&] { change(text); });
    } catch (const std::exception& error) {
      if (text != before) return std::string("changed by a call that failed");
      if (dynamic_cast<const std::regex_error*>(&error) == nullptr) throw;
      text = "regex_error";
    }
    return text;
  };
}

auto Match(const std::string& pattern) {
  return Changed("before", [pattern](std::string& matched) {
    if (!MatchString(kLong, pattern, &matched)) matched = "no match";
  });
}

// A split that throws has appended the fields before the one that it could not allocate.
std::string Split() {
  const std::vector<std::string> all = {kName, kLong, kName};
  std::vector<std::string> fields = {kName};
  const std::string text = kLong + "," + kName;
  try {
    Within([&] { SplitWithFlag(text.c_str(), ',', fields); });
  } catch (const std::bad_alloc&) {
    if (std::equal(fields.begin(), fields.end(), all.begin())) throw;
  }
  return fields == all ? "done" : "wrong fields";
}

std::string TwoLevelPath() {
  const TemporaryFolder folder;
  const std::string root = folder.Path();
  return Call(&ConcatBackupFilePath, root.c_str(), kLong.c_str(), true, true)().substr(root.size());
}

// A statement that is never finalized keeps the database, which then shows as blocks that are never freed.
std::string CheckTable(const char* column) {
  sqlite3* db = nullptr;
  sqlite3_open(":memory:", &db);
  const std::unique_ptr<sqlite3, int (*)(sqlite3*)> owner(db, &sqlite3_close);
  sqlite3_exec(db, "CREATE TABLE a_table_with_a_long_name(x)", nullptr, nullptr, nullptr);
  const auto check = [&] { return TableCheck(db, "a_table_with_a_long_name", column).column; };
  return std::to_string(static_cast<int>(Within(check)));
}

std::string InsertStrings() {
  const Libplist::Node dict(plist_new_dict()), array(plist_new_array());
  Within([&] {
    AppendPlistArrayString(array.get(), "a");
    InsertPlistDictString(dict.get(), "key", "a");
    AddNoneValuePlistDictString(dict.get(), "other key", "");
  });
  return "done";
}

const Libplist::Node kString(plist_new_string("a")), kSeven(plist_new_uint(7)), kUid(plist_new_uid(7));
const unsigned char kEleven[] = {0, 0, 0, 0, 0, 0, 0, 11};
const unsigned char kBytes[] = {0, 'c', 'b', 'a'};
const std::vector<std::string> kNull = {"null"};

}  // namespace

const std::vector<LibraryCall>& EveryFunction() {
  static const std::vector<LibraryCall> calls = {
      {"GetParentDir, pool", [] { return AutoreleasePool(), Call(&GetParentDir, kPath)(); }, kFolder},
      {"GetParentDir", Call(&GetParentDir, kPath), kFolder},
      {"GetFileName", Call(&GetFileName, kPath), kName},
      {"GetFileNameWithoutExt", Call(&GetFileNameWithoutExt, kName.c_str()), "a file with a long name"},
      {"GetFilePostfix", Call(&GetFilePostfix, kPath), "and a long extension"},
      {"ConcatFilePath", Call(&ConcatFilePath, "/a", "f"), "/a/f", kNull},
      {"CalcFileID", Call(&CalcFileID, "HomeDomain", "Library/notes.db"),
       "4c936ec5e49eb87cae13d3d20531f0618e04222e"},
      {"ConcatBackupFilePath", Call(&ConcatBackupFilePath, "", kPath, false, true), kFolder + kName},
      {"ConcatBackupFilePath, two-level", &TwoLevelPath, "a /" + kLong},
      {"ConcatStr", Call(&ConcatStr, "ab", "c"), "abc", kNull},
      {"ReplaceChar", Call(&ReplaceChar, "a.b", '/', '.'), "a/b", kNull},
      {"ReplaceStr, growing", Changed("a-a", [](auto& s) { ReplaceStr(s, "a", kPath); }),
       kPath + ("-" + kFolder + kName)},
      {"ReplaceStr, inside", Changed(kLong, [](auto& s) { ReplaceStr(s, &s[2], &s[2]); }), kLong},
      {"DeleteDelims", Call(&DeleteDelims, "a,b,c", ",", "-"), "a-b-c", kNull},
      {"SplitWithFlag", &Split, "done"},
      {"MatchString", Match("(a|b)[a-z ]+(?=.).*"), kLong},
      {"MatchString, no match", Match("a[^x]{2,5}b"), "no match"},
      {"MatchString, going back", Match("(a).*\\1.*"), kLong},
      {"MatchString, bad pattern", Match("a(b"), "regex_error", {"bad_alloc", "regex_error"}},
      {"ConvertSecondsToTime", Call(&ConvertSecondsToTime, 3661U), "01:01:01", kNull},
      {"GetCurrentDate", [] { return Call(&GetCurrentDate)().substr(0, 2); }, "20", {"nu"}},
      {"MonthRange", Call([] { return MonthRange(1'700'000'000).second; }), "2023-11-30", {}},
      {"ConvertUtcToLocalDate", [] { return Call(&ConvertUtcToLocalDate, 1'700'000'000)().substr(0, 8); },
       "2023-11-"},
      {"GenerateLowerUuid", [] { return Call(&GenerateLowerUuid)().substr(14, 1); }, "4"},
      {"TableCheck", [] { return CheckTable("x"); }, "0"},
      {"TableCheck, refused", [] { return CheckTable("a_column_it_lacks"); }, "3"},
      {"ReadPlist, XML", OnFile(&ReadPlist, "<plist><array><true/></array></plist>"), "node", kNull},
      {"ReadPlist, entities", OnFile(&ReadPlist, kEntities), "node", kNull},
      {"ReadPlist, binary", OnFile(&ReadPlist, kBinaryList), "node", kNull},
      {"ReadPlist, damaged", OnFile(&ReadPlist, "bplist00 and what is none"), "null", kNull},
      {"IsBinPlist", OnFile(&IsBinPlist, "bplist00"), "1", {}},
      {"ReverseBytes", Call(&ReverseBytes, kBytes, 0, 4), "abc", kNull},
      {"AppendPlistArrayString and the like", &InsertStrings, "done", {}},
      {"PlistCopyZero", Call(&PlistCopyZero, kString.get()), "node", {}},
      {"PlistCopyEmptyString", Call(&PlistCopyEmptyString, kString.get()), "node", {}},
      {"PrintPlist", Call([] { return PrintPlist(kString.get()), 0; }), "0", {}},
      {"GetIntegerValue", Call(&GetIntegerValue, kSeven.get()), "7", {}},
      {"GetDictOrUidIntegerValue", Call(&GetDictOrUidIntegerValue, kUid.get(), nullptr), "7", {}},
      {"ToInt16", Call(&ToInt16, kEleven, 6), "11", {}},
      {"ToUInt16", Call(&ToUInt16, kEleven, 6), "11", {}},
      {"ToInt32", Call(&ToInt32, kEleven, 4), "11", {}},
      {"ToUInt32", Call(&ToUInt32, kEleven, 4), "11", {}},
      {"ToInt64", Call(&ToInt64, kEleven, 0), "11", {}},
      {"CompareI", Call(&CompareI, kPath, kPath), "0", {}},
      {"StartWith", Call(&StartWith, std::cref(kLong), "a text"), "1", {}},
      {"EndWith", Call(&EndWith, std::cref(kLong), "itself"), "1", {}},
      {"IsPhoneFormat", Call(&IsPhoneFormat, "0123456789,1", ','), "1", {}},
      {"isNotPhoneNumberChar", Call(&isNotPhoneNumberChar, 'a'), "1", {}},
      {"ColorHexToRGB", Call([] { return ColorHexToRGB("#010203").blue; }), "3", {}},
      {"GetZeroIntIsNull", Call(&GetZeroIntIsNull, "11"), "11", {}},
      {"GetZeroLongIsNull", Call(&GetZeroLongIsNull, "11"), "11", {}},
      {"Base64Decode", Call(&Base64Decode, "YQ==", 4U), "", {}},
      {"GetFileCreateTime", Call(&GetFileCreateTime, "a", "b"), "", {}},
      {"MemMem", Call([] { return MemMem(kPath, 9, "zz", 2) == nullptr; }), "1", {}}};
  return calls;
}
