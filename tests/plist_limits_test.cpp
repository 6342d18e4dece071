#include "common/plist_limits.h"

#include <plist/plist.h>

#include "common/plist_util.h"
#include "support/temporary_folder.h"
#include "support/testing.h"

namespace {

using namespace std::string_literals;

std::string Number(std::uint64_t value, std::size_t size) {
  std::string bytes;
  while (size-- > 0) bytes += static_cast<char>(value >> (8 * size));
  return bytes;
}

// An object of a binary list, its count in a number of `1 << log` bytes, whatever sense that makes.
std::string Object(unsigned type, std::uint64_t count, const std::string& contents, unsigned log = 2) {
  return Number(type | 0x0F, 1) + Number(0x10 | log, 1) + Number(count, std::size_t{1} << log) + contents;
}

std::string List(const std::vector<std::string>& objects, std::size_t reference_size) {
  std::string bytes = "bplist00";
  std::string table;
  for (const std::string& object : objects) {
    table += Number(bytes.size(), 3);
    bytes += object;
  }
  return bytes + table + Number(3, 7) + Number(reference_size, 1) + Number(objects.size(), 8) + Number(0, 8) +
         Number(bytes.size(), 8);
}

// `levels` containers, each with `width` references to the next, and a text at the end, which is also each
// dictionary's key.
std::string Nest(unsigned type, std::size_t levels, std::size_t width = 1) {
  const std::string keys = type == 0xD0 ? Times(width, Number(levels, 2)) : "";
  std::vector<std::string> objects;
  for (std::size_t next = 1; next <= levels; ++next)
    objects.push_back(Object(type, width, keys + Times(width, Number(next, 2))));
  objects.push_back(Object(0x50, 3, "key"));
  return List(objects, 2);
}

// One array with `count` references to the one object behind it.
std::string Repeat(std::size_t count, const std::string& object, std::size_t size = 1) {
  return List({Object(0xA0, count, Times(count, Number(1, size))), object}, size);
}

// The verdict on a block that ends exactly where the list ends, so that a sanitizer sees every read past it.
bool IsSafe(const std::string& list) {
  const std::vector<char> bytes(list.begin(), list.end());
  return PlistLimits::BinaryIsSafe(bytes.data(), bytes.size());
}

bool Parses(const std::string& list) {
  plist_t root = nullptr;
  plist_from_bin(list.c_str(), static_cast<unsigned>(list.size()), &root);
  plist_free(root);
  return root != nullptr;
}

TEST(PlistLimits, ListsThatAWriterMayMakePass) {
  const std::string lists[] = {
      Nest(0xA0, 512), Nest(0xC0, 512), Nest(0xD0, 512), Nest(0xA0, 14, 2), Repeat(1000000, "\x54text"),
      Repeat(100000, Object(0x50, 890, std::string(890, 'x'), 3), 2),
      // A container that fills the file, three times.
      List({Object(0xA0, 3, "\1\1\1"), Object(0xA0, 300000, std::string(300000, '\2')), "\x53key"}, 1),
      Repeat(1, "\x62\0a\1\0"s)};
  for (const std::string& list : lists) {
    EXPECT_TRUE(IsSafe(list)) << &list - lists;
    EXPECT_TRUE(Parses(list)) << &list - lists;
  }
}

TEST(PlistLimits, ListsThatExplodeNestTooDeepOrHoldANulAreRefused) {
  for (const unsigned type : {0xA0U, 0xC0U, 0xD0U})
    EXPECT_FALSE(IsSafe(Nest(type, 513)) || IsSafe(Nest(type, 16, 2))) << type;
  for (const unsigned type : {0x40U, 0x50U, 0x60U})
    EXPECT_FALSE(IsSafe(Repeat(100000, Object(type, 1 << 19, std::string(1 << 20, 'x'))))) << type;
  EXPECT_FALSE(IsSafe(List({Object(0xA0, 1, "\0"s)}, 1)));  // refers to itself
  EXPECT_FALSE(IsSafe(Repeat(1, "\x62\0a\0\0"s)));
}

// What the library and its host do with the deepest tree.
void HandleDeepest() {
  const TemporaryFolder folder;
  plist_t root = PlistUtil::ReadPlist(folder.Write("deepest", Nest(0xD0, 512)).c_str());
  plist_t copy = PlistUtil::PlistCopyZero(root);
  EXPECT_EQ(plist_dict_get_size(copy), 1U);
  for (plist_t tree : {root, copy}) plist_free(tree);
}

TEST(PlistLimits, TheDeepestTreeFitsIntoAStackOf512KiB) {
  RunOnStack(512 << 10, HandleDeepest);
}

}  // namespace
