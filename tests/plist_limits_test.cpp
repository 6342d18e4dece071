#include "common/plist_limits.h"

#include "common/plist_util.h"
#include "support/plists.h"
#include "support/temporary_folder.h"

namespace {

using namespace std::string_literals;
using BinaryPlist::Reader;

// An object whose count follows its marker as an integer of `1 << log` bytes.
std::string Counted(unsigned type, std::uint64_t count, const std::string& body, unsigned log = 2) {
  return BigEndian(type | 0x0F, 1) + BigEndian(0x10 | log, 1) + BigEndian(count, std::size_t{1} << log) +
         body;
}

// An array of one object.
std::string ArrayOf(const std::string& object) {
  return BinaryList({"\xA1\1", object});
}

// `levels` containers, each with `width` references to the next, and a string at the end, which is also each
// dictionary's key.
std::string Nest(unsigned type, std::size_t levels, std::size_t width = 1) {
  const std::string keys = type == BinaryPlist::kDictionary ? Times(width, BigEndian(levels, 2)) : "";
  std::vector<std::string> objects;
  for (std::size_t next = 1; next <= levels; ++next)
    objects.push_back(Counted(type, width, keys + Times(width, BigEndian(next, 2))));
  objects.push_back(Counted(BinaryPlist::kAsciiString, 3, "key"));
  return BinaryList(objects, 2);
}

// An array of `count` references to one object.
std::string Repeat(std::size_t count, const std::string& object, std::size_t size = 1) {
  return BinaryList({Counted(BinaryPlist::kArray, count, Times(count, BigEndian(1, size))), object}, size);
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
  EXPECT_FALSE(IsSafe(BinaryList({"\xA1\0"s}))) << "an array in itself";
  EXPECT_FALSE(IsSafe(ArrayOf("\x62\0a\0\0"s))) << "a NUL in the first four units";
  EXPECT_FALSE(IsSafe(ArrayOf("\x66\0a\0b\0c\0d\0e\0\0"s))) << "a NUL after them";
  EXPECT_FALSE(IsSafe(BinaryList({"\xD1\1\2", "\x62\0a\0\0"s, "\x09"}))) << "a NUL in a key";

  // The promises of plist_limits.h.
  const std::string many_references = Counted(BinaryPlist::kArray, 300'000, std::string(300'000, '\2'));
  EXPECT_TRUE(IsSafe(Repeat(1'000'000, Counted(BinaryPlist::kAsciiString, 380, std::string(380, 'x')))));
  EXPECT_TRUE(IsSafe(Repeat(100'000, Counted(BinaryPlist::kAsciiString, 890, std::string(890, 'x')), 2)));
  EXPECT_TRUE(IsSafe(BinaryList({"\xA3\1\1\1", many_references, "Skey"})));
}

void ExpectValid(bool valid, const std::string& list) {
  SCOPED_TRACE(testing::PrintToString(list));
  const std::vector<char> bytes(list.begin(), list.end());
  const auto length = static_cast<std::uint32_t>(bytes.size());
  Reader reader;
  EXPECT_EQ(reader.Open(bytes.data(), length) && PlistLimits::BinaryIsValid(reader, length), valid);
  const Libplist::Node root(Libplist::Parse(plist_from_bin, bytes.data(), length));
  EXPECT_EQ(root != nullptr, valid);
}

TEST(PlistLimits, ListsAreValidWhenLibplistParsesThem) {
  const std::string ones = Times(16, "\1"), good = BinaryList({"\xD1\1\1", "Qx"});
  ExpectValid(true, good);
  ExpectValid(Libplist::kReadsNull, ArrayOf("\0"s));
  // The longest number of each kind; ASCII with a NUL; UTF-16 with zero bytes but no NUL; a count of 8 bytes.
  for (const std::string& object :
       {"\x14" + ones, "\x23" + ones.substr(8), "\x33" + ones.substr(8), "\x83\xFF\xFF\xFF\xFF"s, "\x53x\0y"s,
        "\x62\0a\1\0"s, Counted(BinaryPlist::kAsciiString, 1, "x", 3)})
    ExpectValid(true, ArrayOf(object));
  // An integer, real, date, UID, data, UTF-16 and count that reach into the table.
  for (const std::string& object : {"\x13\1"s, "\x22\1\1\1"s, "\x33" + ones.substr(9), "\x81\1"s, "\x42x"s,
                                    "\x62\1\1\1"s, "\x4F\x12\0\0\0"s})
    ExpectValid(false, ArrayOf(object));
  // A UID of more than 32 bits; UTF-16 without a unit; a count that is no integer.
  for (const std::string& object : {"\x84\1\0\0\0\0"s, "\x60"s, "\x5F\x20\1x"s})
    ExpectValid(false, ArrayOf(object));
  // An array and a dictionary that reach into the table, the first byte of which is the reference 0.
  ExpectValid(false, BinaryList({"\x09", "\xA2\0"s}, 1, 1));
  ExpectValid(false, BinaryList({"Qk", "\xD2\0\0\0"s}, 1, 1));
  ExpectValid(false, BinaryList({"\xD1\1\2", "\x09", "Qx"}));  // a key that is no string
  ExpectValid(false, BinaryList({"\xA1\1"}));                  // a reference to no object
  ExpectValid(false, good.substr(0, 39));                      // too short
  // An offset size and a reference size of 0; a table that reaches into the trailer, that is in it, and that
  // is in the header.
  for (const auto& [from_end, byte] : {std::pair(26, '\0'), {25, '\0'}, {17, '\3'}, {1, '\x20'}, {1, '\7'}}) {
    std::string changed = good;
    *(changed.end() - from_end) = byte;
    ExpectValid(false, changed);
  }
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
