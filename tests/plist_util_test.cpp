#include "common/plist_util.h"

#include <fcntl.h>
#include <unistd.h>

#include <iostream>
#include <regex>

#include "support/services.h"
#include "support/testing.h"

namespace {

using Node = std::unique_ptr<void, std::integral_constant<decltype(&plist_free), &plist_free>>;

// The node as XML, or as the given function of libplist writes it.
std::string Written(const Node& node, decltype(&plist_to_xml) write = plist_to_xml) {
  char* bytes = nullptr;
  std::uint32_t length = 0;
  write(node.get(), &bytes, &length);
  const std::unique_ptr<char, decltype(&std::free)> owner(bytes, &std::free);
  return {bytes, length};
}

// What stands between the plist tags of its XML, in one line, without the tags that end a text.
std::string Body(const Node& node) {
  return std::regex_replace(Written(node), std::regex("<[?!][^>]*>|</?plist[^>]*>|[\n\t]|</string>|</key>"),
                            "");
}

Node Sample() {
  Node dict(plist_new_dict());
  plist_dict_set_item(dict.get(), "name", plist_new_string("value"));
  plist_dict_set_item(dict.get(), "count", plist_new_uint(1ULL << 40));
  return dict;
}

// The file "/a b", with contents that the test gives for its first open and for all later ones. Notes the
// calls by letter. Its streams are real files, so that the descriptor tells whether one is still open.
struct ScriptedFile final : IBasUtilityFile {
  ScriptedFile(std::uint64_t bytes, std::string now, std::string then)
      : size(bytes), contents(std::move(now)), later(std::move(then)) {}

  void CreateDirectory(const char*) override { ADD_FAILURE(); }
  std::uint64_t GetFileSize(const char* path) override {
    return calls += std::string(path) == "/a b" ? 's' : '?', size;
  }
  std::FILE* OpenFile(const char* path, const char* mode) override {
    EXPECT_EQ(std::string(path) + ' ' + mode, "/a b rb");
    calls += IsOpen() ? "too early" : "o";
    const std::string given = std::exchange(contents, later);
    if (given == "refused") return nullptr;
    std::FILE* const stream = std::tmpfile();
    descriptor = ::fileno(stream);
    std::fwrite(given.data(), 1, given.size(), stream);
    std::rewind(stream);
    return stream;
  }
  std::string Calls() const { return calls + (IsOpen() ? " left open" : ""); }
  bool IsOpen() const { return ::fcntl(descriptor, F_GETFD) != -1; }
  std::uint64_t size;
  std::string contents, later, calls;
  int descriptor = -1;
};

// The second open alone tells the encoding, and the other parser is no second chance. A size that is too
// large counts all the same: zeros stand behind the contents, and the parsers are told its low 32 bits.
TEST(ReadPlist, AsksOnceForTheSizeAndOpensTwice) {
  const std::string xml = Written(Sample()), bin = Written(Sample(), plist_to_bin), none = "refused";
  const std::uint64_t x = xml.size(), b = bin.size(), four_gib = 1ULL << 32;
  const struct {
    std::uint64_t size;
    std::string first, later, outcome;  // the calls, and the tree if there is one
  } cases[] = {{x, xml, xml, "soo" + xml}, {b, bin, bin, "soo" + xml}, {x, xml, none, "soo" + xml},
               {0, "", "", "s"},           {x, none, none, "so"},      {x + 100, xml, xml, "soo" + xml},
               {b, bin, none, "soo"},      {x, xml, bin, "soo"},       {x + four_gib, xml, xml, "soo" + xml},
               {x / 2, xml, xml, "soo"},   {b, bin, xml, "soo"},       {UINT64_MAX, xml, xml, "so"}};
  for (const auto& c : cases) {
    ScriptedFile file(c.size, c.first, c.later);
    const ServiceOverride<IBasUtilityFile> in_place(&file);
    const Node root(PlistUtil::ReadPlist("/a b"));
    EXPECT_EQ(file.Calls() + (root != nullptr ? Written(root) : ""), c.outcome) << &c - cases;
    EXPECT_EQ(in_place.AccessorCalls(), static_cast<int>(file.Calls().size()));
  }
  EXPECT_TRUE(PlistUtil::ReadPlist(nullptr) == nullptr && PlistUtil::IsBinPlist(nullptr) == 0);
}

TEST(IsBinPlist, ComparesEightBytes) {
  for (const std::string contents : {"bplist00+", "bplist0", "", "bplist01", "Bplist00", "refused"}) {
    ScriptedFile file(0, contents, "opened again");
    const ServiceOverride<IBasUtilityFile> in_place(&file);
    EXPECT_EQ(PlistUtil::IsBinPlist("/a b"), contents == "bplist00+" ? 1 : 0) << contents;
    EXPECT_EQ(file.Calls(), "o");
  }
}

// Leaks, if any, are the leak sanitizer's to find.
TEST(StringNodes, StandInForWhatIsMissingInTheRightContainersOnly) {
  const Node dict(plist_new_dict()), array(plist_new_array());
  const char* const cases[][3] = {{"a", "b", "old"}, {"a", "b", "x"},     {"c", "d", " "},
                                  {"e", "f", ""},    {"g", "h", nullptr}, {nullptr, nullptr, "y"}};
  for (const auto& [key, other_key, value] : cases) {
    for (const plist_t node : {plist_t{nullptr}, plist_t{dict.get()}, plist_t{array.get()}}) {
      PlistUtil::InsertPlistDictString(node, key, value);
      PlistUtil::AddNoneValuePlistDictString(node, other_key, value);
      PlistUtil::AppendPlistArrayString(node, value);
    }
  }
  EXPECT_EQ(
      Body(dict) + Body(array),
      "<dict><key>a<string>x<key>b<string>x<key>c<string> <key>d<string> <key>e<string><key>f<string>(None)"
      "<key>g<string><key>h<string>(None)</dict><array><string>old<string>x<string> <string><string>"
      "<string>y</array>");
}

TEST(Copies, StandInForNull) {
  const Node sample = Sample(), one(PlistUtil::PlistCopyZero(sample.get())),
             other(PlistUtil::PlistCopyEmptyString(sample.get())), zero(PlistUtil::PlistCopyZero(nullptr)),
             empty(PlistUtil::PlistCopyEmptyString(nullptr));
  EXPECT_EQ(Body(one) + Body(other), Body(sample) + Body(sample));
  EXPECT_EQ(Body(zero) + Body(empty), "<integer>0</integer><string>");
}

TEST(IntegerValues, AreZeroForEverythingElse) {
  const Node sample = Sample(), uid(plist_new_uid(77)), array(plist_new_array());
  const plist_t dict = sample.get(), count = plist_dict_get_item(dict, "count");
  const char* const keys[] = {"count", "name", "none", nullptr};
  std::string values;
  for (const plist_t node : {dict, count, uid.get(), array.get(), plist_t{nullptr}}) {
    for (const char* key : keys)
      values += std::to_string(PlistUtil::GetDictOrUidIntegerValue(node, key)) + ' ';
    values += std::to_string(PlistUtil::GetIntegerValue(node)) + '|';
  }
  EXPECT_EQ(values, "1099511627776 0 0 0 0|0 0 0 0 1099511627776|77 77 77 77 0|0 0 0 0 0|0 0 0 0 0|");
}

// In a child process, in which the two kinds of streams may be kept in step or not.
TEST(PrintPlist, WritesInOrder) {
  const Node sample = Sample();
  const auto print = [&](bool synchronised) {
    std::ios::sync_with_stdio(synchronised);
    ::dup2(STDERR_FILENO, STDOUT_FILENO);  // standard error is what the parent process sees
    std::cout << "before\n";
    std::cout.width(300);
    PlistUtil::PrintPlist(nullptr);
    PlistUtil::PrintPlist(sample.get());
    std::_Exit(0);  // flushes nothing
  };
  const std::string printed = "before\n.................PrintPlist BEGIN.................\n" +
                              Written(sample) + "\n.................PrintPlist END.................\n";
  for (const bool synchronised : {true, false})
    EXPECT_EXIT(print(synchronised), testing::ExitedWithCode(0), testing::Eq(printed));
}

}  // namespace
