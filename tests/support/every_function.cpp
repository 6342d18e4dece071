#include "support/every_function.h"

#include <sqlite3.h>

#include <concepts>
#include <numeric>
#include <regex>

#include "common/big_endian_bit_converter.h"
#include "common/plist_util.h"
#include "common/utils.h"
#include "platform/autorelease_pool.h"
#include "support/temporary_folder.h"

namespace {

using namespace BigEndianBitConverter;
using namespace PlistUtil;
using namespace Utils;

template <auto kFunction>
using Calls = std::integral_constant<decltype(kFunction), kFunction>;
using Node = std::unique_ptr<void, Calls<&plist_free>>;

// Long enough that no string keeps them in itself.
constexpr char kPath[] =
    "/a folder with a long name/another one/a file with a long name.and a long extension";
const std::string kFolder = "/a folder with a long name/another one/";
const std::string kName = "a file with a long name.and a long extension";
const std::string kLong = "a text that is longer than a string object itself";

// A list of two texts.
const std::string kBinaryList(
    "bplist00\xA2\1\2QaQb\x08\x0B\x0D\0\0\0\0\0\0\1\1\0\0\0\0\0\0\0\3\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\x0F", 50);

// While it lives, the thread is in the library.
struct Inside {
  Inside() { inside_library_call = true; }
  ~Inside() { inside_library_call = false; }
};

// Makes a call inside the library, which allocates nothing of its own.
template <typename Call>
auto Within(Call call) {
  return Inside(), call();
}

// A result as a text to compare. A block or a node is freed, as the caller has to.
struct Text {
  static std::string Of(std::string text) { return text; }
  static std::string Of(const std::pair<std::string, std::string>& texts) {
    return texts.first + texts.second;
  }
  static std::string Of(std::integral auto number) { return std::to_string(number); }
  static std::string Of(plist_t node) { return Node(node) != nullptr ? "read" : "null"; }
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

// What `change` makes of a text, which stays as it was when the call throws.
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

// A split that throws has added the fields before the one it had no memory for.
std::string Split() {
  std::vector<std::string> fields = {kName};
  const std::string all = kName + kLong + kName;
  const auto joined = [&fields] { return std::accumulate(fields.begin(), fields.end(), std::string()); };
  const std::string text = kLong + "," + kName;
  try {
    Within([&] { SplitWithFlag(text.c_str(), ',', fields); });
  } catch (const std::bad_alloc&) {
    if (all.starts_with(joined())) throw;
  }
  return joined() == all ? "done" : "wrong fields";
}

std::string TwoLevelPath() {
  const TemporaryFolder folder;
  const std::string root = folder.Path();
  return Call(&ConcatBackupFilePath, root.c_str(), kLong.c_str(), true, true)().substr(root.size());
}

// A statement that stays open keeps the database, as blocks that nobody frees.
std::string CheckTable(const char* column) {
  sqlite3* opened = nullptr;
  sqlite3_open(":memory:", &opened);
  const std::unique_ptr<sqlite3, Calls<&sqlite3_close>> db(opened);
  sqlite3_exec(opened, "CREATE TABLE a_table_with_a_long_name(x)", nullptr, nullptr, nullptr);
  const auto result = Within([&] { return TableCheck(opened, "a_table_with_a_long_name", column); });
  return std::to_string(static_cast<int>(result.table)) + std::to_string(static_cast<int>(result.column));
}

// The helpers for nodes, whose allocations are all libplist's.
std::uint64_t BuildTree() {
  const Node root(plist_new_dict());
  const Node list(plist_new_array());
  AppendPlistArrayString(list.get(), kLong.c_str());
  InsertPlistDictString(root.get(), "a", kLong.c_str());
  AddNoneValuePlistDictString(root.get(), "b", nullptr);
  plist_free(PlistCopyZero(list.get()));
  plist_free(PlistCopyEmptyString(nullptr));
  PrintPlist(root.get());
  plist_dict_set_item(root.get(), "c", plist_new_uint(3));
  return GetDictOrUidIntegerValue(root.get(), "c") + GetIntegerValue(plist_dict_get_item(root.get(), "c"));
}

// What allocates nothing.
std::int64_t Ask(const std::string& text) {
  const unsigned char bytes[] = {0, 0, 0, 0, 0, 0, 0, 1};
  const RgbColor color = ColorHexToRGB("#010203");
  const char* const begin = text.c_str();
  return ToInt16(bytes, 6) + ToUInt16(bytes, 6) + ToInt32(bytes, 4) + std::int64_t{ToUInt32(bytes, 4)} +
         ToInt64(bytes, 0) + CompareI(begin, begin) + StartWith(text, begin) + EndWith(text, begin) +
         IsPhoneFormat("1", ',') + isNotPhoneNumberChar('a') + color.red + color.green + color.blue +
         GetZeroIntIsNull("1") + GetZeroLongIsNull("1") + (Base64Decode("YQ==", 4) == "a") +
         GetFileCreateTime("a", "b").empty() + (MemMem(begin, 9, begin + 5, 3) == begin + 5);
}

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
      {"MonthRange", Call(&MonthRange, 1'700'000'000), "2023-11-012023-11-30", {}},
      {"ConvertUtcToLocalDate", [] { return Call(&ConvertUtcToLocalDate, 1'700'000'000)().substr(0, 8); },
       "2023-11-"},
      {"GenerateLowerUuid", [] { return Call(&GenerateLowerUuid)().substr(14, 1); }, "4"},
      {"TableCheck", [] { return CheckTable("x"); }, "00"},
      {"TableCheck, refused", [] { return CheckTable("a_column_it_lacks"); }, "03"},
      {"ReadPlist, XML", OnFile(&ReadPlist, "<plist><array><true/></array></plist>"), "read", kNull},
      {"ReadPlist, binary", OnFile(&ReadPlist, kBinaryList), "read", kNull},
      {"ReadPlist, damaged", OnFile(&ReadPlist, "bplist00 and what is none"), "null", kNull},
      {"IsBinPlist", OnFile(&IsBinPlist, "bplist00"), "1", {}},
      {"ReverseBytes", Call(&ReverseBytes, kBytes, 0, 4), "abc", kNull},
      {"helpers for nodes", Call(&BuildTree), "6", {}},
      {"questions", Call(&Ask, kLong), "19", {}}};
  return calls;
}
