#include "common/plist_util.h"

#include <stdio.h>
#include <unistd.h>

#include <iostream>

#include "support/plists.h"
#include "support/services.h"

namespace {

using Libplist::Node;

// The text of a string node; "(no string)" for any other node and for null.
std::string StringOf(plist_t node) {
  char* text = nullptr;
  if (plist_get_node_type(node) == PLIST_STRING) plist_get_string_val(node, &text);
  return Take(text).value_or("(no string)");
}

const Node kSample = [] {
  Node dict(plist_new_dict());
  plist_dict_set_item(dict.get(), "name", plist_new_string("value"));
  plist_dict_set_item(dict.get(), "count", plist_new_uint(1ULL << 40));
  return dict;
}();
const std::string kXml = Libplist::Encoded(kSample.get());
const std::string kBinary = Libplist::Encoded(kSample.get(), &plist_to_bin);

// What an open of the file finds; nothing: it fails.
using Contents = std::optional<std::string>;

// The only file of this service. Its first open and all later ones may find different contents.
struct ScriptedFile final : IBasUtilityFile {
  ScriptedFile(std::uint64_t bytes, Contents first_open, Contents second_open)
      : size(bytes), first(std::move(first_open)), later(std::move(second_open)) {}
  void CreateDirectory(const char*) override { ADD_FAILURE(); }
  std::uint64_t GetFileSize(const char* path) override {
    calls += std::string("size of ") + path + '\n';
    return size;
  }
  std::FILE* OpenFile(const char* path, const char* mode) override {
    calls += std::string("open ") + path + ", " + mode + '\n';
    Contents& contents = calls.find("open") == calls.rfind("open") ? first : later;
    return contents ? ::fmemopen(contents->data(), contents->size(), mode) : nullptr;
  }
  std::uint64_t size;
  Contents first, later;
  std::string calls;
};

TEST(ReadPlist, ReadsTheFirstOpenAndLetsTheSecondDecideTheEncoding) {
  // Later releases of libplist reject the zeros that replace what the file lacks.
  const std::string padded = kXml + std::string(100, '\0');
  const bool parses_with_zeros = Node(Libplist::Parse(plist_from_xml, padded.data(),
                                                      static_cast<std::uint32_t>(padded.size()))) != nullptr;
  // Name, size, contents at the first and at the second open, number of opens, whether there is a tree.
  const std::tuple<const char*, std::uint64_t, Contents, Contents, std::size_t, bool> cases[] = {
      {"XML", kXml.size(), kXml, kXml, 2, true},
      {"binary", kBinary.size(), kBinary, kBinary, 2, true},
      {"empty", 0, "", "", 0, false},
      {"cannot be opened", kXml.size(), std::nullopt, std::nullopt, 1, false},
      {"XML, gone at the second open", kXml.size(), kXml, std::nullopt, 2, true},
      {"binary, gone at the second open", kBinary.size(), kBinary, std::nullopt, 2, false},
      {"XML, then binary", kXml.size(), kXml, kBinary, 2, false},
      {"size too small", kXml.size() / 2, kXml, kXml, 2, false},
      {"file too short", padded.size(), kXml, kXml, 2, parses_with_zeros},
      {"size of which the low 32 bits are right", kXml.size() + (1ULL << 32), kXml, kXml, 2, true},
      {"size that no block can have", UINT64_MAX, kXml, kXml, 1, false},
  };
  for (const auto& [name, size, first_open, second_open, opens, gives_tree] : cases) {
    SCOPED_TRACE(name);
    ScriptedFile file(size, first_open, second_open);
    const ServiceOverride<IBasUtilityFile> in_place(&file);
    const Node root(PlistUtil::ReadPlist("/a b"));
    EXPECT_EQ(file.calls, "size of /a b\n" + Times(opens, "open /a b, rb\n"));
    EXPECT_EQ(in_place.AccessorCalls(), static_cast<int>(1 + opens));
    EXPECT_EQ(Libplist::Encoded(root.get()), gives_tree ? kXml : "");
  }
  EXPECT_EQ(PlistUtil::ReadPlist(nullptr), nullptr);
}

TEST(IsBinPlist, ComparesEightBytes) {
  const std::pair<Contents, std::int32_t> cases[] = {
      {"bplist00+", 1}, {"bplist0", 0}, {"bplist01", 0}, {"Bplist00", 0}, {std::nullopt, 0}};
  for (const auto& [contents, result] : cases) {
    ScriptedFile file(0, contents, "not to be opened again");
    const ServiceOverride<IBasUtilityFile> in_place(&file);
    EXPECT_EQ(PlistUtil::IsBinPlist("/a b"), result) << contents.value_or("cannot be opened");
    EXPECT_EQ(file.calls, "open /a b, rb\n");
  }
  EXPECT_EQ(PlistUtil::IsBinPlist(nullptr), 0);
}

TEST(StringNodes, ReplaceMissingAndEmptyValues) {
  const char* const cases[][3] = {{nullptr, "", "(None)"}, {"", "", "(None)"}, {" ", " ", " "}};
  const Node dict(plist_new_dict()), array(plist_new_array());
  for (const auto& [value, inserted, none_inserted] : cases) {
    // The same keys each time: a later value replaces the earlier one.
    PlistUtil::InsertPlistDictString(dict.get(), "insert", value);
    PlistUtil::AddNoneValuePlistDictString(dict.get(), "add", value);
    PlistUtil::AppendPlistArrayString(array.get(), value);
    EXPECT_EQ(StringOf(plist_dict_get_item(dict.get(), "insert")), inserted);
    EXPECT_EQ(StringOf(plist_dict_get_item(dict.get(), "add")), none_inserted);
    EXPECT_EQ(StringOf(plist_array_get_item(array.get(), plist_array_get_size(array.get()) - 1)), inserted);
  }
  // A node that was made and not attached would be a leak, which the leak sanitizer reports.
  for (const plist_t node : {plist_t{nullptr}, plist_t{array.get()}, plist_t{dict.get()}}) {
    const char* const key = node == dict.get() ? nullptr : "key";
    PlistUtil::InsertPlistDictString(node, key, "x");
    PlistUtil::AddNoneValuePlistDictString(node, key, "x");
    if (node != array.get()) PlistUtil::AppendPlistArrayString(node, "x");
  }
  EXPECT_EQ(plist_dict_get_size(dict.get()), 2U);
  EXPECT_EQ(plist_array_get_size(array.get()), 3U);
}

TEST(Copies, ReplaceNull) {
  for (const auto copy : {&PlistUtil::PlistCopyZero, &PlistUtil::PlistCopyEmptyString})
    EXPECT_EQ(Libplist::Encoded(Node(copy(kSample.get())).get()), kXml);
  const Node zero(PlistUtil::PlistCopyZero(nullptr)), empty(PlistUtil::PlistCopyEmptyString(nullptr));
  EXPECT_EQ(plist_get_node_type(zero.get()), PLIST_UINT);
  EXPECT_EQ(PlistUtil::GetIntegerValue(zero.get()), 0U);
  EXPECT_EQ(StringOf(empty.get()), "");
}

TEST(IntegerValues, AreZeroForEverythingElse) {
  const plist_t sample = kSample.get();
  const Node uid(plist_new_uid(77)), array(plist_new_array());
  const std::tuple<const char*, plist_t, const char*, std::uint64_t, std::uint64_t> cases[] = {
      {"integer", plist_dict_get_item(sample, "count"), "count", 1ULL << 40, 0},
      {"UID, null key", uid.get(), nullptr, 0, 77},
      {"array", array.get(), "count", 0, 0},
      {"null", nullptr, "count", 0, 0},
      {"dictionary, integer", sample, "count", 0, 1ULL << 40},
      {"dictionary, string", sample, "name", 0, 0},
      {"dictionary, no such key", sample, "none", 0, 0},
      {"dictionary, null key", sample, nullptr, 0, 0}};
  for (const auto& [name, node, key, integer, dict_or_uid_integer] : cases) {
    EXPECT_EQ(PlistUtil::GetIntegerValue(node), integer) << name;
    EXPECT_EQ(PlistUtil::GetDictOrUidIntegerValue(node, key), dict_or_uid_integer) << name;
  }
}

// In a child process, whose C and C++ streams may be synchronised or not.
TEST(PrintPlist, WritesInOrder) {
  const auto print = [&](bool synchronised) {
    std::ios::sync_with_stdio(synchronised);
    ::dup2(STDERR_FILENO, STDOUT_FILENO);  // EXPECT_EXIT captures standard error only
    std::cout << "before\n";
    std::cout.width(300);
    PlistUtil::PrintPlist(nullptr);
    PlistUtil::PrintPlist(kSample.get());
    std::_Exit(0);  // flushes nothing
  };
  const std::string printed = "before\n.................PrintPlist BEGIN.................\n" + kXml +
                              "\n.................PrintPlist END.................\n";
  for (const bool synchronised : {true, false})
    EXPECT_EXIT(print(synchronised), testing::ExitedWithCode(0), testing::Eq(printed));
}

}  // namespace
