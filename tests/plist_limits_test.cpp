#include "common/plist_limits.h"

#include "common/libplist.h"
#include "common/plist_util.h"
#include "support/temporary_folder.h"
#include "support/testing.h"

namespace {

using namespace std::string_literals;
using BinaryPlist::Object;
using BinaryPlist::Reader;

std::string Number(std::uint64_t value, std::size_t size) {
  std::string bytes;
  while (size-- > 0) bytes += static_cast<char>(value >> (8 * size));
  return bytes;
}

// An object whose count follows its marker as an integer of `1 << log` bytes.
std::string Counted(unsigned type, std::uint64_t count, const std::string& body, unsigned log = 2) {
  return Number(type | 0x0F, 1) + Number(0x10 | log, 1) + Number(count, std::size_t{1} << log) + body;
}

std::string List(const std::vector<std::string>& objects, std::size_t reference_size,
                 std::uint64_t root = 0) {
  std::string bytes = "bplist00";
  std::string table;
  for (const std::string& object : objects) {
    table += Number(bytes.size(), 3);
    bytes += object;
  }
  return bytes + table + Number(3, 7) + Number(reference_size, 1) + Number(objects.size(), 8) +
         Number(root, 8) + Number(bytes.size(), 8);
}

// An array of one object.
std::string ArrayOf(const std::string& object) {
  return List({"\xA1\1", object}, 1);
}

// `levels` containers, each with `width` references to the next, and a string at the end, which is also each
// dictionary's key.
std::string Nest(unsigned type, std::size_t levels, std::size_t width = 1) {
  const std::string keys = type == BinaryPlist::kDictionary ? Times(width, Number(levels, 2)) : "";
  std::vector<std::string> objects;
  for (std::size_t next = 1; next <= levels; ++next)
    objects.push_back(Counted(type, width, keys + Times(width, Number(next, 2))));
  objects.push_back(Counted(BinaryPlist::kAsciiString, 3, "key"));
  return List(objects, 2);
}

// An array of `count` references to one object.
std::string Repeat(std::size_t count, const std::string& object, std::size_t size = 1) {
  return List({Counted(BinaryPlist::kArray, count, Times(count, Number(1, size))), object}, size);
}

// The bytes end where the block ends, so that a sanitizer sees every read past it.
bool IsSafe(const std::string& list) {
  const std::vector<char> bytes(list.begin(), list.end());
  return PlistLimits::BinaryIsSafe(bytes.data(), bytes.size());
}

TEST(PlistLimits, ListsThatExpandOrNestTooFarOrHoldNulsAreRejected) {
  const std::string large(1 << 20, 'x');
  for (const unsigned type : {BinaryPlist::kArray, BinaryPlist::kSet, BinaryPlist::kDictionary}) {
    EXPECT_TRUE(IsSafe(Nest(type, 512))) << type;
    EXPECT_FALSE(IsSafe(Nest(type, 513))) << type;
    EXPECT_TRUE(IsSafe(Nest(type, 12, 2))) << type << ": two references to each";
    EXPECT_FALSE(IsSafe(Nest(type, 16, 2))) << type << ": two references to each";
  }
  for (const unsigned type : {BinaryPlist::kData, BinaryPlist::kAsciiString, BinaryPlist::kUtf16String})
    EXPECT_FALSE(IsSafe(Repeat(100'000, Counted(type, 1 << 19, large)))) << type;
  EXPECT_FALSE(IsSafe(List({"\xA1\0"s}, 1))) << "an array in itself";
  EXPECT_FALSE(IsSafe(ArrayOf("\x62\0a\0\0"s))) << "a NUL in the first four units";
  EXPECT_FALSE(IsSafe(ArrayOf("\x66\0a\0b\0c\0d\0e\0\0"s))) << "a NUL after them";
  EXPECT_FALSE(IsSafe(List({"\xD1\1\2", "\x62\0a\0\0"s, "\x09"}, 1))) << "a NUL in a key";

  // The promises of plist_limits.h.
  const std::string many_references = Counted(BinaryPlist::kArray, 300'000, std::string(300'000, '\2'));
  EXPECT_TRUE(IsSafe(Repeat(1'000'000, Counted(BinaryPlist::kAsciiString, 380, std::string(380, 'x')))));
  EXPECT_TRUE(IsSafe(Repeat(100'000, Counted(BinaryPlist::kAsciiString, 890, std::string(890, 'x')), 2)));
  EXPECT_TRUE(IsSafe(List({"\xA3\1\1\1", many_references, "Skey"}, 1)));
}

TEST(PlistLimits, ListsAreValidWhenLibplistParsesThem) {
  const std::string good = List({"\xD1\1\1", "Qx"}, 1);
  const auto changed = [&good](std::size_t from_end, char byte) {
    return std::string(good).replace(good.size() - from_end, 1, 1, byte);
  };
  const std::tuple<const char*, std::string, bool> cases[] = {
      {"a dictionary", good, true},
      {"the longest number of each kind",
       List({"\xA4\1\2\3\4", "\x14" + Times(16, "\1"), "\x23" + Times(8, "\1"), "\x33" + Times(8, "\1"),
             "\x83\xFF\xFF\xFF\xFF"},
            1),
       true},
      {"an integer that reaches into the table", ArrayOf("\x13\1"), false},
      {"a real that reaches into the table", ArrayOf("\x22\1\1\1"), false},
      {"a date that reaches into the table", ArrayOf("\x33" + Times(7, "\1")), false},
      {"null", ArrayOf("\0"s), Libplist::kReadsNull},
      {"a UID of more than 32 bits", ArrayOf("\x84\1\0\0\0\0"s), false},
      {"a UID that reaches into the table", ArrayOf("\x81\1"), false},
      {"data that reaches into the table", ArrayOf("\x42x"), false},
      {"ASCII with a NUL", ArrayOf("\x53x\0y"s), true},
      {"UTF-16 with zero bytes but no NUL", ArrayOf("\x62\0a\1\0"s), true},
      {"UTF-16 that reaches into the table", ArrayOf("\x62\1\1\1"), false},
      {"UTF-16 without a unit", ArrayOf("\x60"), false},
      {"a count of 8 bytes", ArrayOf(Counted(BinaryPlist::kAsciiString, 1, "x", 3)), true},
      {"a count that is no integer", ArrayOf("\x5F\x20\1x"), false},
      {"a count that reaches into the table", ArrayOf("\x4F\x12\0\0\0"s), false},
      // The last reference, 0, is the first byte of the table.
      {"an array that reaches into the table", List({"\x09", "\xA2\0"s}, 1, 1), false},
      {"a dictionary that reaches into the table", List({"Qk", "\xD2\0\0\0"s}, 1, 1), false},
      {"a key that is no string", List({"\xD1\1\2", "\x09", "Qx"}, 1), false},
      {"a reference to no object", List({"\xA1\1"}, 1), false},
      {"an offset size of 0", changed(26, '\0'), false},
      {"a reference size of 0", changed(25, '\0'), false},
      {"a table that reaches into the trailer", changed(17, '\3'), false},
      {"a table offset in the trailer", changed(1, '\x20'), false},
      {"a table offset in the header", changed(1, '\7'), false},
      {"too short", good.substr(0, 39), false}};
  for (const auto& [name, list, valid] : cases) {
    const std::vector<char> bytes(list.begin(), list.end());
    const auto length = static_cast<std::uint32_t>(bytes.size());
    Reader reader;
    EXPECT_EQ(reader.Open(bytes.data(), length) && PlistLimits::BinaryIsValid(reader, length), valid) << name;
    const Libplist::Node root(Libplist::Parse(plist_from_bin, bytes.data(), length));
    EXPECT_EQ(root != nullptr, valid) << name;
  }
}

TEST(BinaryPlist, FindsWhatContainersHold) {
  // A dictionary with the keys "a", "b" in UTF-16, "c" cut off at a NUL, and "a" once more.
  const std::string list =
      List({"\xD4\1\2\3\1\4\5\6\7", "Qa", "\x61\0b"s, "Rc\0"s, "\x11\2\1", "\xA2\6\4", "\x80\7", "Ttext"}, 1);
  Reader reader;
  Object root, array, found;
  const auto value = [&found](bool is_found) { return is_found ? Reader::ValueOf(found) : 0; };
  ASSERT_TRUE(reader.Open(list.data(), list.size()) && reader.Read(reader.Find(reader.Root()), root));
  EXPECT_EQ(value(reader.FindItem(root, "a", found)), 0x201U) << "the first of two";
  EXPECT_EQ(value(reader.FindItem(root, "c", found)), 7U);
  EXPECT_EQ(value(reader.FindItem(root, "ab", found)), 0U);
  ASSERT_TRUE(reader.FindItem(root, "b", array));
  EXPECT_EQ(value(reader.FindElement(array, 1, found)), 0x201U);
  EXPECT_EQ(value(reader.FindElement(array, 2, found)), 0U);
  EXPECT_EQ(value(reader.FindElement(root, 0, found)), 0U) << "not an array";
  EXPECT_EQ(value(reader.FindItem(array, "a", found)), 0U) << "not a dictionary";
}

TEST(PlistLimits, TheDeepestTreeFitsIntoAStackOf512KiB) {
  RunOnStack(512 << 10, [] {
    const TemporaryFolder folder;
    const std::string path = folder.Write("deepest", Nest(BinaryPlist::kDictionary, 512));
    const Libplist::Node root(PlistUtil::ReadPlist(path.c_str()));
    const Libplist::Node copy(PlistUtil::PlistCopyZero(root.get()));
    EXPECT_EQ(plist_dict_get_size(copy.get()), 1U);
  });
}

}  // namespace
