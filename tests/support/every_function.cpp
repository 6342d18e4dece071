#include "support/every_function.h"

#include <gtest/gtest.h>
#include <plist/plist.h>
#include <sqlite3.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <new>
#include <regex>

#include "common/big_endian_bit_converter.h"
#include "common/plist_util.h"
#include "common/utils.h"
#include "platform/autorelease_pool.h"
#include "support/temporary_folder.h"

constinit thread_local bool inside_library_call = false;

namespace {

// Marks what `call` does as done inside the library.
template <typename Call>
auto Within(Call call) {
  struct Inside {
    Inside() { inside_library_call = true; }
    ~Inside() { inside_library_call = false; }
  } const inside;
  return call();
}

// Long enough that no string keeps them in itself.
constexpr char kPath[] =
    "/a folder with a long name/another folder/a file with a long name.and a long extension";
constexpr char kName[] = "a file with a long name.and a long extension";
constexpr char kFields[] = "the first of the fields,the second of the fields,the third of the fields";
constexpr char kLong[] = "a text that is longer than a string object itself";

// A block that the caller frees, as a text to compare.
template <typename Byte>
std::string Taken(Byte* block) {
  const std::unique_ptr<Byte, decltype(&std::free)> owner(block, &std::free);
  return block != nullptr ? reinterpret_cast<const char*>(block) : "null";
}

struct FreeNode {
  void operator()(void* node) const { plist_free(node); }
};
using Node = std::unique_ptr<void, FreeNode>;

struct CloseDatabase {
  void operator()(sqlite3* db) const { EXPECT_EQ(sqlite3_close(db), SQLITE_OK) << "a statement is open"; }
};

std::string CheckTable(const char* table, const char* column) {
  sqlite3* opened = nullptr;
  sqlite3_open(":memory:", &opened);
  const std::unique_ptr<sqlite3, CloseDatabase> db(opened);
  sqlite3_exec(opened, "CREATE TABLE a_table_with_a_long_name(x)", nullptr, nullptr, nullptr);
  const TableCheckResult result = Within([&] { return Utils::TableCheck(opened, table, column); });
  return std::to_string(static_cast<int>(result.table)) + std::to_string(static_cast<int>(result.column));
}

std::string Replaced(std::string text, std::size_t search_at, const char* replacement) {
  const std::string before = text;
  const std::string outside = text.substr(search_at, 4);
  try {
    Within([&] {
      const char* const search = replacement != nullptr ? outside.c_str() : text.c_str() + search_at;
      return Utils::ReplaceStr(text, search, replacement != nullptr ? replacement : search);
    });
  } catch (const std::bad_alloc&) {
    if (text != before) return "changed by a call that failed";
    throw;
  }
  return text;
}

std::string Split() {
  std::vector<std::string> fields = {kLong};
  std::string left = "threw";
  try {
    Within([&] {
      Utils::SplitWithFlag(kFields, ',', fields);
      return 0;
    });
    left = "done";
  } catch (const std::bad_alloc&) {
  }
  const std::vector<std::string> all = {kLong, "the first of the fields", "the second of the fields",
                                        "the third of the fields"};
  if (fields.size() > all.size() || !std::equal(fields.begin(), fields.end(), all.begin()))
    return "wrong fields";
  return left;
}

std::string Match(const char* pattern) {
  std::string matched = "before";
  try {
    const bool matches = Within([&] { return Utils::MatchString(kLong, pattern, &matched); });
    return matches ? matched : "no match";
  } catch (const std::exception& error) {
    if (matched != "before") return "changed by a call that failed";
    if (dynamic_cast<const std::regex_error*>(&error) != nullptr) return "regex_error";
    throw;
  }
}

std::string Read(const std::string& contents, bool binary_test) {
  const TemporaryFolder folder;
  const std::string path = folder.Write("a.plist", contents);
  if (binary_test) return std::to_string(Within([&] { return PlistUtil::IsBinPlist(path.c_str()); }));
  const Node root(Within([&] { return PlistUtil::ReadPlist(path.c_str()); }));
  return root != nullptr ? "read" : "null";
}

std::string BinaryList() {
  const Node list(plist_new_array());
  for (const char* text : {"one", kLong, "three"}) PlistUtil::AppendPlistArrayString(list.get(), text);
  char* bytes = nullptr;
  std::uint32_t length = 0;
  plist_to_bin(list.get(), &bytes, &length);
  std::string result(bytes, length);
  std::free(bytes);
  return result;
}

// The helpers for nodes, whose allocations are all libplist's.
std::string BuildTree() {
  const Node root(plist_new_dict());
  const Node list(plist_new_array());
  const Node copy(Within([&] {
    PlistUtil::AppendPlistArrayString(list.get(), kLong);
    PlistUtil::InsertPlistDictString(root.get(), "a", kLong);
    PlistUtil::AddNoneValuePlistDictString(root.get(), "b", nullptr);
    plist_free(PlistUtil::PlistCopyZero(list.get()));
    plist_free(PlistUtil::PlistCopyZero(nullptr));
    plist_free(PlistUtil::PlistCopyEmptyString(nullptr));
    PlistUtil::PrintPlist(root.get());
    return PlistUtil::PlistCopyEmptyString(root.get());
  }));
  plist_dict_set_item(copy.get(), "c", plist_new_uint(3));
  return std::to_string(Within([&] {
    return PlistUtil::GetDictOrUidIntegerValue(copy.get(), "c") +
           PlistUtil::GetIntegerValue(plist_dict_get_item(copy.get(), "c"));
  }));
}

std::string Decode() {
  const unsigned char bytes[] = {0, 0, 0, 0, 0, 0, 0, 1};
  using namespace BigEndianBitConverter;
  return std::to_string(Within([&] {
    return ToInt16(bytes, 6) + ToUInt16(bytes, 6) + ToInt32(bytes, 4) +
           static_cast<std::int64_t>(ToUInt32(bytes, 4)) + ToInt64(bytes, 0);
  }));
}

// What allocates nothing.
std::string Ask() {
  return std::to_string(Within([] {
    const RgbColor color = Utils::ColorHexToRGB("#010203");
    const std::string text = kLong;
    return Utils::CompareI(kLong, kLong) + Utils::StartWith(text, kLong) + Utils::EndWith(text, kLong) +
           Utils::IsPhoneFormat("1", ',') + Utils::isNotPhoneNumberChar('a') + color.red + color.green +
           color.blue + Utils::GetZeroIntIsNull("1") + static_cast<int>(Utils::GetZeroLongIsNull("1")) +
           static_cast<int>(Utils::Base64Decode(kLong, 4).size() +
                            Utils::GetFileCreateTime(kLong, kLong).size()) +
           (Utils::MemMem(kLong, 9, kLong + 5, 3) == kLong + 5);
  }));
}

const std::vector<std::string> kThrows = {"bad_alloc"};
const std::vector<std::string> kNull = {"null"};

const LibraryCall kCalls[] = {
    {"GetParentDir, its objects in a pool",
     [] {
       const AutoreleasePool pool;
       return Within([] { return Utils::GetParentDir(kPath); });
     },
     "/a folder with a long name/another folder/", kThrows},
    {"GetParentDir, its objects the thread's",
     [] { return Within([] { return Utils::GetParentDir(kPath); }); },
     "/a folder with a long name/another folder/", kThrows},
    {"GetFileName", [] { return Within([] { return Utils::GetFileName(kPath); }); }, kName, kThrows},
    {"GetFileNameWithoutExt", [] { return Within([] { return Utils::GetFileNameWithoutExt(kName); }); },
     "a file with a long name", kThrows},
    {"GetFilePostfix", [] { return Within([] { return Utils::GetFilePostfix(kPath); }); },
     "and a long extension", kThrows},
    {"ConcatFilePath", [] { return Taken(Within([] { return Utils::ConcatFilePath("/a", "f"); })); }, "/a/f",
     kNull},
    {"CalcFileID", [] { return Within([] { return Utils::CalcFileID("HomeDomain", "Library/notes.db"); }); },
     "4c936ec5e49eb87cae13d3d20531f0618e04222e", kThrows},
    {"ConcatBackupFilePath, flat",
     [] { return Within([] { return Utils::ConcatBackupFilePath("/b/", kName, false, true); }); },
     "/b/" + std::string(kName), kThrows},
    {"ConcatBackupFilePath, two-level",
     [] {
       const TemporaryFolder folder;
       const std::string root = folder.Path() + "/";
       const std::string path =
           Within([&] { return Utils::ConcatBackupFilePath(root.c_str(), kLong, true, true); });
       return path.substr(root.size());
     },
     "a /" + std::string(kLong), kThrows},
    {"ConcatStr", [] { return Taken(Within([] { return Utils::ConcatStr("ab", "c"); })); }, "abc", kNull},
    {"ReplaceChar", [] { return Taken(Within([] { return Utils::ReplaceChar("a.b", '/', '.'); })); }, "a/b",
     kNull},
    {"ReplaceStr, growing", [] { return Replaced("a text in which the text grows", 2, kLong); },
     "a " + std::string(kLong) + " in which the " + kLong + " grows", kThrows},
    {"ReplaceStr, from inside the string", [] { return Replaced(kLong, 2, nullptr); }, kLong, kThrows},
    {"DeleteDelims", [] { return Taken(Within([] { return Utils::DeleteDelims(kFields, ",", "-"); })); },
     "the first of the fields-the second of the fields-the third of the fields", kNull},
    {"SplitWithFlag", &Split, "done", {"threw"}},
    {"MatchString", [] { return Match("(a|b)[a-z ]+(?=.).*"); }, kLong, kThrows},
    {"MatchString, no match", [] { return Match("a[^x]{2,5}b"); }, "no match", kThrows},
    {"MatchString, going back", [] { return Match("(a).*\\1.*"); }, kLong, kThrows},
    {"MatchString, bad pattern", [] { return Match("a(b"); }, "regex_error", {"bad_alloc", "regex_error"}},
    {"ConvertSecondsToTime", [] { return Taken(Within([] { return Utils::ConvertSecondsToTime(3661); })); },
     "01:01:01", kNull},
    {"GetCurrentDate",
     [] {
       const std::string date = Taken(Within([] { return Utils::GetCurrentDate(); }));
       return date == "null" ? date : std::to_string(date.size());
     },
     "19", kNull},
    {"MonthRange",
     [] { return Within([] { return Utils::MonthRange(1'700'000'000); }).second; },
     "2023-11-30",
     {}},
    {"ConvertUtcToLocalDate",
     [] { return Within([] { return Utils::ConvertUtcToLocalDate(1'700'000'000); }).substr(0, 8); },
     "2023-11-", kThrows},
    {"GenerateLowerUuid",
     [] {
       const AutoreleasePool pool;
       return std::to_string(Within([] { return Utils::GenerateLowerUuid(); }).size());
     },
     "36", kThrows},
    {"TableCheck", [] { return CheckTable("a_table_with_a_long_name", "x"); }, "00", kThrows},
    {"TableCheck, refused", [] { return CheckTable("a_table_with_a_long_name", "a_column_it_lacks"); }, "03",
     kThrows},
    {"ReadPlist, XML", [] { return Read("<plist><array><string>a</string></array></plist>", false); }, "read",
     kNull},
    {"ReadPlist, binary", [] { return Read(BinaryList(), false); }, "read", kNull},
    {"ReadPlist, damaged", [] { return Read("bplist00 and what is none", false); }, "null", kNull},
    {"IsBinPlist", [] { return Read("bplist00", true); }, "1", {}},
    {"ReverseBytes",
     [] {
       return Taken(Within([] {
         return BigEndianBitConverter::ReverseBytes(reinterpret_cast<const unsigned char*>("\0cba"), 0, 4);
       }));
     },
     "abc", kNull},
    {"decoders", &Decode, "5", {}},
    {"helpers for nodes", &BuildTree, "6", {}},
    {"questions", &Ask, "13", {}},
};

}  // namespace

std::span<const LibraryCall> EveryFunction() {
  return kCalls;
}
