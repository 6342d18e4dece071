#include "common/plist_util.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/services.h"
#include "support/temporary_folder.h"

namespace {

using testing::ElementsAre;

struct FreeNode {
  void operator()(void* node) const { plist_free(node); }
};
using Node = std::unique_ptr<void, FreeNode>;

// The node written by plist_to_xml or plist_to_bin.
template <typename Writer>
std::string Written(Writer* write, plist_t node) {
  char* bytes = nullptr;
  std::uint32_t length = 0;
  write(node, &bytes, &length);
  const std::unique_ptr<char, decltype(&std::free)> owner(bytes, &std::free);
  return {bytes, length};
}

std::string Xml(plist_t node) {
  return Written(plist_to_xml, node);
}

std::string String(plist_t node) {
  char* text = nullptr;
  plist_get_string_val(node, &text);
  const std::unique_ptr<char, decltype(&std::free)> owner(text, &std::free);
  return text != nullptr ? text : "no string";
}

Node Sample() {
  Node dict(plist_new_dict());
  plist_dict_set_item(dict.get(), "name", plist_new_string("value"));
  plist_dict_set_item(dict.get(), "count", plist_new_uint(std::uint64_t{1} << 40));
  return dict;
}

// Files whose contents the test gives: each open takes the next of them, the last one staying. Notes the
// calls, and whether a stream was still open at one. Its streams are real files, so that their descriptors
// tell.
class ScriptedFiles final : public IBasUtilityFile {
 public:
  ScriptedFiles(std::uint64_t size, std::vector<std::string> contents)
      : size_(size), contents_(std::move(contents)) {}

  void CreateDirectory(const char*) override { throw std::logic_error("not to be called"); }
  std::uint64_t GetFileSize(const char* path) override {
    calls.push_back(std::string("size ") + path);
    return size_;
  }
  std::FILE* OpenFile(const char* path, const char* mode) override {
    calls.push_back(std::string("open ") + path + ' ' + mode + (OpenStreams() == 0 ? "" : " too early"));
    const std::string& contents = contents_[std::min(opens_++, contents_.size() - 1)];
    if (contents == "refused") return nullptr;
    std::FILE* const stream = std::tmpfile();
    descriptors_.insert(::fileno(stream));
    std::fwrite(contents.data(), 1, contents.size(), stream);
    std::rewind(stream);
    return stream;
  }
  std::ptrdiff_t OpenStreams() const {
    return std::count_if(descriptors_.begin(), descriptors_.end(),
                         [](int fd) { return ::fcntl(fd, F_GETFD) != -1; });
  }

  std::vector<std::string> calls;

 private:
  std::uint64_t size_;
  std::vector<std::string> contents_;
  std::size_t opens_ = 0;
  std::set<int> descriptors_;
};

TEST(ReadPlist, AsksOnceForTheSizeAndOpensTwice) {
  const std::string xml = Xml(Sample().get());
  const std::string binary = Written(plist_to_bin, Sample().get());
  const std::string rest = binary.substr(8);
  const struct {
    const char* what;
    std::uint64_t size;
    std::vector<std::string> contents;  // at the first and at the second open
    bool parses;
    std::size_t opens;
  } cases[] = {{"XML", xml.size(), {xml}, true, 2},
               {"binary", binary.size(), {binary}, true, 2},
               {"empty", 0, {""}, false, 0},
               {"refused at once", xml.size(), {"refused"}, false, 1},
               {"binary, refused at the second open", binary.size(), {binary, "refused"}, false, 2},
               {"XML, refused at the second open", xml.size(), {xml, "refused"}, true, 2},
               {"damaged binary, no second chance as XML", xml.size(), {xml, binary}, false, 2},
               {"XML in the end, no second chance as binary", binary.size(), {binary, xml}, false, 2},
               {"the magic in other letter case", binary.size(), {"BPLIST00" + rest}, false, 2},
               {"the magic of another version", binary.size(), {"bplist01" + rest}, false, 2},
               {"seven bytes", 7, {"bplist0"}, false, 2},
               {"shrunken XML", xml.size() + 100, {xml}, true, 2},
               {"shrunken binary", binary.size() + 100, {binary}, false, 2},
               {"a size that lies low", xml.size() / 2, {xml}, false, 2},
               {"4 GiB and a whole file", (std::uint64_t{1} << 32) + xml.size(), {xml}, true, 2},
               {"the largest size", UINT64_MAX, {xml}, false, 1},
               {"the largest size but one", UINT64_MAX - 1, {xml}, false, 1}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    ScriptedFiles files(c.size, c.contents);
    const ServiceOverride<IBasUtilityFile> in_place(&files);
    const Node root(PlistUtil::ReadPlist("/a b"));
    EXPECT_EQ(root != nullptr ? Xml(root.get()) : "", c.parses ? xml : "");
    std::vector<std::string> calls(c.opens + 1, "open /a b rb");
    calls.front() = "size /a b";
    EXPECT_EQ(files.calls, calls);
    EXPECT_EQ(in_place.AccessorCalls(), static_cast<int>(calls.size()));
    EXPECT_EQ(files.OpenStreams(), 0);
  }
}

TEST(ReadPlist, ReadsRealFiles) {
  const TemporaryFolder folder;
  const std::string xml = Xml(Sample().get());
  EXPECT_EQ(Xml(Node(PlistUtil::ReadPlist(folder.Write("file", xml).c_str())).get()), xml);
  EXPECT_EQ(PlistUtil::ReadPlist(folder.Path("missing").c_str()), nullptr);
  EXPECT_EQ(PlistUtil::ReadPlist(folder.Path().c_str()), nullptr);
  EXPECT_EQ(PlistUtil::ReadPlist(nullptr), nullptr);
}

TEST(IsBinPlist, ComparesEightBytes) {
  const struct {
    std::string contents;
    std::int32_t binary;
  } cases[] = {{"bplist00", 1}, {"bplist00 and more", 1}, {"bplist0", 0}, {"", 0},       {"bplist01", 0},
               {"Bplist00", 0}, {" bplist00", 0},         {"<?xml", 0},   {"refused", 0}};
  for (const auto& c : cases) {
    ScriptedFiles files(0, {c.contents});
    const ServiceOverride<IBasUtilityFile> in_place(&files);
    EXPECT_EQ(PlistUtil::IsBinPlist("f"), c.binary) << c.contents;
    EXPECT_THAT(files.calls, ElementsAre("open f rb"));
    EXPECT_EQ(files.OpenStreams(), 0);
  }
  EXPECT_EQ(PlistUtil::IsBinPlist(nullptr), 0);
}

TEST(StringNodes, StandInForWhatIsMissing) {
  const struct {
    const char* value;
    const char* inserted;
    const char* none;
  } cases[] = {{"x", "x", "x"}, {" ", " ", " "}, {"", "", "(None)"}, {nullptr, "", "(None)"}};
  for (const auto& c : cases) {
    const Node dict(plist_new_dict());
    PlistUtil::InsertPlistDictString(dict.get(), "a", "overwritten");
    PlistUtil::InsertPlistDictString(dict.get(), "a", c.value);
    PlistUtil::AddNoneValuePlistDictString(dict.get(), "b", c.value);
    EXPECT_EQ(plist_dict_get_size(dict.get()), 2u);
    EXPECT_EQ(String(plist_dict_get_item(dict.get(), "a")), c.inserted);
    EXPECT_EQ(String(plist_dict_get_item(dict.get(), "b")), c.none);
    const Node array(plist_new_array());
    PlistUtil::AppendPlistArrayString(array.get(), c.value);
    ASSERT_EQ(plist_array_get_size(array.get()), 1u);
    EXPECT_EQ(String(plist_array_get_item(array.get(), 0)), c.inserted);
  }
}

// Leaks, if any, are the leak sanitizer's to find.
TEST(StringNodes, GoIntoTheRightContainersOnly) {
  const Node dict(plist_new_dict());
  const Node array(plist_new_array());
  PlistUtil::InsertPlistDictString(dict.get(), nullptr, "x");
  PlistUtil::AddNoneValuePlistDictString(dict.get(), nullptr, "x");
  PlistUtil::AppendPlistArrayString(dict.get(), "x");
  PlistUtil::AppendPlistArrayString(nullptr, "x");
  for (const plist_t no_dict : {static_cast<plist_t>(nullptr), static_cast<plist_t>(array.get())}) {
    PlistUtil::InsertPlistDictString(no_dict, "a", "x");
    PlistUtil::AddNoneValuePlistDictString(no_dict, "a", "x");
  }
  EXPECT_EQ(plist_dict_get_size(dict.get()), 0u);
  EXPECT_EQ(plist_array_get_size(array.get()), 0u);
}

TEST(Copies, StandInForNull) {
  const Node zero(PlistUtil::PlistCopyZero(nullptr));
  EXPECT_EQ(Xml(zero.get()), Xml(Node(plist_new_uint(0)).get()));
  const Node empty(PlistUtil::PlistCopyEmptyString(nullptr));
  EXPECT_EQ(String(empty.get()), "");
  const Node sample = Sample();
  for (const auto copy : {PlistUtil::PlistCopyZero, PlistUtil::PlistCopyEmptyString}) {
    const Node copied(copy(sample.get()));
    EXPECT_NE(copied, sample);
    EXPECT_EQ(Xml(copied.get()), Xml(sample.get()));
  }
}

TEST(IntegerValues, AreZeroForEverythingElse) {
  const Node sample = Sample();
  const Node uid(plist_new_uid(77));
  const Node array(plist_new_array());
  EXPECT_EQ(PlistUtil::GetIntegerValue(plist_dict_get_item(sample.get(), "count")), std::uint64_t{1} << 40);
  EXPECT_EQ(PlistUtil::GetIntegerValue(uid.get()), 0u);
  EXPECT_EQ(PlistUtil::GetIntegerValue(sample.get()), 0u);
  EXPECT_EQ(PlistUtil::GetIntegerValue(nullptr), 0u);
  const struct {
    plist_t node;
    const char* key;
    std::uint64_t value;
  } cases[] = {{sample.get(), "count", std::uint64_t{1} << 40},
               {sample.get(), "name", 0},
               {sample.get(), "none", 0},
               {sample.get(), nullptr, 0},
               {uid.get(), "count", 77},
               {uid.get(), nullptr, 77},
               {array.get(), "count", 0},
               {plist_dict_get_item(sample.get(), "count"), "count", 0},
               {nullptr, "count", 0}};
  for (const auto& c : cases) EXPECT_EQ(PlistUtil::GetDictOrUidIntegerValue(c.node, c.key), c.value);
}

// What a child process prints, in which the two kinds of streams may be kept in step or not.
std::string PrintedBy(plist_t node, bool synchronised) {
  const TemporaryFolder folder;
  const std::string path = folder.Path("output");
  const auto print = [&] {
    std::ios::sync_with_stdio(synchronised);
    if (std::freopen(path.c_str(), "wb", stdout) == nullptr) std::_Exit(1);
    std::cout << "before\n";
    std::cout.width(300);
    PlistUtil::PrintPlist(node);
    std::cout.width(0);
    std::cout << "after\n" << std::flush;
    std::_Exit(0);
  };
  EXPECT_EXIT(print(), testing::ExitedWithCode(0), "");
  return ReadFile(path);
}

TEST(PrintPlist, WritesInOrder) {
  const Node sample = Sample();
  const std::string framed = ".................PrintPlist BEGIN.................\n" + Xml(sample.get()) +
                             "\n.................PrintPlist END.................\n";
  for (const bool synchronised : {true, false}) {
    EXPECT_EQ(PrintedBy(sample.get(), synchronised), "before\n" + framed + "after\n");
    EXPECT_EQ(PrintedBy(nullptr, synchronised), "before\nafter\n");
  }
}

}  // namespace
