#include "common/plist_limits.h"

#include <gtest/gtest.h>
#include <plist/plist.h>
#include <pthread.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "common/plist_util.h"
#include "support/temporary_folder.h"

namespace {

using namespace std::string_literals;

std::string Number(std::uint64_t value, std::size_t size) {
  std::string bytes(size, '\0');
  for (std::size_t i = 0; i < size && i < 8; ++i) bytes[size - 1 - i] = static_cast<char>(value >> (8 * i));
  return bytes;
}

// Writes a binary list object by object, whatever sense it makes.
struct BinaryList {
  std::size_t reference_size = 2;
  std::size_t offset_size = 4;
  std::vector<std::string> objects{};

  // A marker whose count stands in a number of `1 << log` bytes behind it.
  static std::string Marker(unsigned type, std::uint64_t count, unsigned log = 2) {
    return std::string{static_cast<char>(type | 0x0F), static_cast<char>(0x10 | log)} +
           Number(count, std::size_t{1} << log);
  }
  void Add(std::string object) { objects.push_back(std::move(object)); }
  void AddText(std::size_t length) { Add(Marker(0x50, length) + std::string(length, 't')); }
  void AddContainer(unsigned type, std::uint64_t count, const std::vector<std::uint64_t>& references,
                    unsigned log = 2) {
    std::string object = Marker(type, count, log);
    for (const std::uint64_t reference : references) object += Number(reference, reference_size);
    Add(object);
  }
  std::string Bytes(std::uint64_t root = 0) const {
    std::string bytes = "bplist00";
    std::string table;
    for (const std::string& object : objects) {
      table += Number(bytes.size(), offset_size);
      bytes += object;
    }
    const std::size_t table_offset = bytes.size();
    return bytes + table + std::string(6, '\0') + Number(offset_size, 1) + Number(reference_size, 1) +
           Number(objects.size(), 8) + Number(root, 8) + Number(table_offset, 8);
  }
};

// `levels` containers, each with `width` references to the next, and a text at the end, which is also each
// dictionary's key.
std::string Nest(unsigned type, std::size_t levels, std::size_t width = 1, BinaryList list = {}) {
  for (std::size_t level = 1; level <= levels; ++level) {
    std::vector<std::uint64_t> references(width, level);
    if (type == 0xD0) references.insert(references.begin(), width, levels);
    list.AddContainer(type, width, references);
  }
  list.AddText(3);
  return list.Bytes();
}

// One array with `count` references to the one object behind it.
std::string Repeat(std::size_t count, const std::string& object, std::size_t reference_size = 1) {
  BinaryList list{.reference_size = reference_size};
  list.AddContainer(0xA0, count, std::vector<std::uint64_t>(count, 1));
  list.Add(object);
  return list.Bytes();
}

std::string Repeated(std::string_view text, std::size_t times) {
  std::string repeated;
  while (times-- > 0) repeated += text;
  return repeated;
}

struct FreeNode {
  void operator()(void* node) const { plist_free(node); }
};
using Node = std::unique_ptr<void, FreeNode>;

// The verdict on a block that ends exactly where the list ends, so that a sanitizer sees every read past it.
bool IsSafe(const std::string& list) {
  const std::vector<char> bytes(list.begin(), list.end());
  return list.starts_with("bplist00") ? PlistLimits::BinaryIsSafe(bytes.data(), bytes.size())
                                      : PlistLimits::XmlIsSafe(bytes.data(), bytes.size());
}

Node Parse(const std::string& list) {
  plist_t root = nullptr;
  const auto length = static_cast<std::uint32_t>(list.size());
  if (list.starts_with("bplist00")) {
    plist_from_bin(list.c_str(), length, &root);
  } else {
    plist_from_xml(list.c_str(), length, &root);
  }
  return Node(root);
}

TEST(PlistLimits, BinaryListsThatAWriterMayMakePass) {
  const std::string thousand = BinaryList::Marker(0x50, 1000) + std::string(1000, 'x');
  BinaryList four_times{.reference_size = 1};  // a container that fills the file, three times, then a text
  four_times.AddContainer(0xA0, 3, {1, 1, 1});
  four_times.AddContainer(0xA0, 300000, std::vector<std::uint64_t>(300000, 2));
  four_times.AddText(3);
  const std::string lists[] = {
      Nest(0xA0, 512),
      Nest(0xC0, 512),
      Nest(0xD0, 512),
      Nest(0xA0, 14, 2),  // some hundred bytes, 32,767 nodes
      Nest(0xD0, 20, 1, {.reference_size = 8, .offset_size = 8}),
      Nest(0xA0, 20, 1, {.reference_size = 3, .offset_size = 3}),
      Repeat(1000000, "\x54text"),
      Repeat(100000, thousand, 3),
      Repeat(1, BinaryList::Marker(0x40, 8'000'000, 3) + std::string(8'000'000, 'd')),
      four_times.Bytes(),
  };
  for (const std::string& list : lists) {
    EXPECT_TRUE(IsSafe(list)) << "list " << &list - lists;
    EXPECT_NE(Parse(list), nullptr) << "list " << &list - lists;
  }
}

TEST(PlistLimits, BinaryListsThatExplodeAreRefused) {
  BinaryList long_loop;
  for (std::uint64_t i = 0; i < 1000; ++i) long_loop.AddContainer(0xA0, 1, {(i + 1) % 1000});
  BinaryList overlapping;  // a thousand blocks of data, each of them nearly the whole file
  overlapping.AddContainer(0xA0, 0xFFFF, std::vector<std::uint64_t>(0xFFFF, 1));
  for (int i = 0; i < 3; ++i) overlapping.Add(BinaryList::Marker(0x40, 100000));
  overlapping.Add(std::string(100000, 'd'));
  const std::string mebibyte(1 << 20, 'x');
  const std::string lists[] = {
      Nest(0xA0, 513),
      Nest(0xC0, 513),
      Nest(0xD0, 513),
      Nest(0xA0, 100000, 1, {.reference_size = 4}),
      Nest(0xA0, 30, 2),
      Nest(0xD0, 30, 2),
      Nest(0xC0, 8, 14),
      Nest(0xA0, 1, 1).replace(14, 2, Number(0, 2)),  // refers to itself
      long_loop.Bytes(),
      overlapping.Bytes(),
      Repeat(100000, BinaryList::Marker(0x50, mebibyte.size()) + mebibyte),
      Repeat(100000, BinaryList::Marker(0x60, mebibyte.size() / 2) + mebibyte),
      Repeat(100000, BinaryList::Marker(0x40, mebibyte.size(), 3) + mebibyte),
  };
  for (const std::string& list : lists) EXPECT_FALSE(IsSafe(list)) << "list " << &list - lists;
}

// Damage makes none of these lists dangerous, so whatever libplist still reads must pass, and whatever passes
// is read or refused by libplist without harm. A NUL in XML is another matter, see below.
TEST(PlistLimits, DamagedListsAreJudgedAsLibplistReadsThem) {
  BinaryList list{.reference_size = 1, .offset_size = 1};
  list.AddContainer(0xA0, 5, {1, 2, 3, 4, 5}, 0);
  list.AddContainer(0xD0, 2, {2, 3, 4, 5}, 1);
  list.AddText(20);
  list.Add("\x62\x4E\x2D\x65\x87");
  list.Add("\x80\x07");
  list.Add("\x4F\x10\x10"s + std::string(16, 'd'));
  const std::string xml =
      "<?xml version=\"1.0\"?><!DOCTYPE plist [ <!ELEMENT a \"]>\"> ]><plist version=\"1.0\"><!-- <a> -->"
      "<dict><key>a</key><string>x<![CDATA[</dict>]]></string><key>b</key><array a=\">\" ><true/><data>"
      "AAAA</data ></array></dict></plist>";
  std::size_t read = 0;
  for (const std::string& whole : {list.Bytes(), xml, xml + Repeated("<array>", 600)}) {
    for (std::size_t at = 0; at < whole.size() && at < 400; ++at) {
      std::vector<std::string> damaged = {whole.substr(0, at), std::string(whole).erase(at, 1)};
      for (const char byte : {'\0', '\1', '\xFF', '<', '"', '>'})
        damaged.push_back(std::string(whole).replace(at, 1, 1, byte));
      for (const std::string& bytes : damaged) {
        const bool safe = IsSafe(bytes);
        if (Parse(bytes) == nullptr || (bytes[0] == '<' && bytes.find('\0') != std::string::npos)) continue;
        EXPECT_TRUE(safe) << "at " << at << ' ' << bytes;
        ++read;
      }
    }
  }
  EXPECT_GT(read, 500U);
}

struct XmlLevel {
  const char* open;
  const char* close;
};

// What may stand for one level more, made to be counted wrongly.
const XmlLevel kXmlLevels[] = {
    {"<array>", "</array>"},
    {"<dict><key>k</key>", "</dict>"},
    {"<array\n\t>", "</array\n>"},
    {"<array a=\">\">", "</array/>"},
    {"<array a=\"</array>\">", "</array a=\"<array>\">"},
    {"<array a='/'>", "</array>"},
    {"<!-- </array> --><array>", "</array>"},
    {"<!--></array>--><array>", "</array>"},
    {"<? </array> ?><array>", "</array>"},
    {"<? \"?></array>\" ?><array>", "</array>"},
    {"<array><string><![CDATA[</array>]]></string>", "</array>"},
    {"<array><string><!-- </string></array> --></string >", "</array>"},
    {"<array><array/></array><array>", "</array>"},
    {"<array><true/><key/><data>AAAA</data><date a=\"</array>\"/>", "</array>"},
    {"<plist><array>", "</array></plist>"},
};

TEST(PlistLimits, XmlNestingIsCountedWhateverTheTagsLookLike) {
  for (const XmlLevel& level : kXmlLevels) {
    for (const char* start : {"", "<?xml version='1.0'?><plist version=\"1.0\">",
                              "<!DOCTYPE plist [ <!ELEMENT a \"]><array/>\"> ] > ]><plist>"}) {
      const auto nest = [&](std::size_t depth) {
        return start + "<array>"s + Repeated(level.open, depth - 2) + "<array><true/></array>" +
               Repeated(level.close, depth - 2) + "</array>" + (*start == '\0' ? "" : "</plist>");
      };
      EXPECT_TRUE(IsSafe(nest(512))) << start << level.open;
      EXPECT_NE(Parse(nest(512)), nullptr) << start << level.open;
      EXPECT_FALSE(IsSafe(nest(513))) << start << level.open;
    }
  }
  const std::string empty_root = "<plist><array/>" + Repeated("<array>", 511) + Repeated("</array>", 511);
  EXPECT_TRUE(IsSafe(empty_root + "</plist>"));
  EXPECT_FALSE(IsSafe("<plist><array/>" + Repeated("<array>", 512) + Repeated("</array>", 512) + "</plist>"));
  EXPECT_FALSE(IsSafe(Repeated("<array>", 511) + "<dict><key>k</key><array/></dict>"));
  EXPECT_FALSE(IsSafe(Repeated("<array>", 1000000)));
}

TEST(PlistLimits, XmlThatIsOnlyWideOrSpeaksOfNestingPasses) {
  const std::string many = Repeated("<array>", 1000);
  const std::string lists[] = {
      "<array>" + Repeated("<array/><dict /><array></array>", 10000) + "</array>",
      "<!--" + many + "--><array><string><![CDATA[" + many + "]]></string></array>",
      "<? " + many + " ?><array a=\"" + many + "\"/>",
      "<string>text</string>" + many,
      "<array></array>" + many,
  };
  for (const std::string& list : lists) {
    EXPECT_TRUE(IsSafe(list)) << list.substr(0, 60);
    EXPECT_NE(Parse(list), nullptr) << list.substr(0, 60);
  }
}

TEST(PlistLimits, TextsThatHoldANulAreRefused) {
  EXPECT_TRUE(IsSafe(Repeat(1, "\x62\0a\1\0"s)));
  EXPECT_FALSE(IsSafe(Repeat(1, "\x62\0a\0\0"s)));
  EXPECT_FALSE(IsSafe(Repeat(1, "\x6F\x10\x02\0\0\0a"s)));
  EXPECT_TRUE(IsSafe("<plist><string>a</string></plist>\0\0"s));
  EXPECT_FALSE(IsSafe("<plist><string>a\0b</string></plist>"s));
}

// Everything that the host may do with the deepest tree, where a thread has only 512 KiB of stack.
void* HandleDeepest(void* path) {
  const Node root(PlistUtil::ReadPlist(static_cast<const char*>(path)));
  const Node copy(PlistUtil::PlistCopyZero(root.get()));
  char* xml = nullptr;
  std::uint32_t length = 0;
  plist_to_xml(copy.get(), &xml, &length);
  const std::unique_ptr<char, decltype(&std::free)> text(xml, &std::free);
  return root != nullptr && length > 512 * 512 ? path : nullptr;
}

TEST(PlistLimits, TheDeepestTreeFitsIntoASmallStack) {
  const TemporaryFolder folder;
  for (const std::string& list :
       {Nest(0xA0, 512), Nest(0xD0, 512), Repeated("<array>", 512) + Repeated("</array>", 512),
        Repeated("<dict><key>k</key>", 511) + "<dict/>" + Repeated("</dict>", 511)}) {
    std::string path = folder.Write("deepest.plist", list);
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, 512 << 10), 0);
    pthread_t thread{};
    ASSERT_EQ(pthread_create(&thread, &attributes, HandleDeepest, path.data()), 0);
    void* result = nullptr;
    ASSERT_EQ(pthread_join(thread, &result), 0);
    EXPECT_NE(result, nullptr) << list.substr(0, 20);
    pthread_attr_destroy(&attributes);
  }
}

}  // namespace
