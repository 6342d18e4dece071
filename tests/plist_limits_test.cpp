#include "common/plist_limits.h"

#include "common/libplist.h"
#include "common/plist_util.h"
#include "support/temporary_folder.h"
#include "support/testing.h"

namespace {

using namespace std::string_literals;
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
std::string Repeat(std::size_t count, const std::string& object, std::size_t reference_size = 1) {
  return List({Counted(BinaryPlist::kArray, count, Times(count, Number(1, reference_size))), object},
              reference_size);
}

// Results for a block that ends where the list ends, so that a sanitizer sees every read past it.
bool IsSafe(const std::string& list) {
  const std::vector<char> bytes(list.begin(), list.end());
  return PlistLimits::BinaryIsSafe(bytes.data(), bytes.size());
}

bool IsValid(const std::string& list) {
  const std::vector<char> bytes(list.begin(), list.end());
  Reader reader;
  return reader.Open(bytes.data(), bytes.size()) && PlistLimits::BinaryIsValid(reader, bytes.size());
}

bool Parses(const std::string& list) {
  const auto length = static_cast<std::uint32_t>(list.size());
  return Libplist::Node(Libplist::Parse(plist_from_bin, list.c_str(), length)) != nullptr;
}

TEST(PlistLimits, ListsThatAWriterMayMakePass) {
  const struct {
    const char* name;
    std::string list;
  } cases[] = {
      {"512 arrays", Nest(BinaryPlist::kArray, 512)},
      {"512 dictionaries", Nest(BinaryPlist::kDictionary, 512)},
      {"two references to each of 14 arrays", Nest(BinaryPlist::kArray, 14, 2)},
      {"a million references to a short string", Repeat(1'000'000, "\x54text")},
      {"two-byte references to a long string",
       Repeat(100'000, Counted(BinaryPlist::kAsciiString, 890, std::string(890, 'x'), 3), 2)},
      {"a container that fills the list, three times",
       List({"\xA3\1\1\1", Counted(BinaryPlist::kArray, 300'000, std::string(300'000, '\2')), "\x53key"}, 1)},
      {"UTF-16 with zero bytes but no NUL", ArrayOf("\x62\0a\1\0"s)},
      {"ASCII with a NUL", ArrayOf("\x53x\0y"s)},
  };
  for (const auto& each : cases) {
    EXPECT_TRUE(IsSafe(each.list)) << each.name;
    EXPECT_TRUE(IsValid(each.list)) << each.name;
    EXPECT_TRUE(Parses(each.list)) << each.name;
  }
}

TEST(PlistLimits, ListsThatExpandOrNestTooFarAreRejected) {
  const std::string large(1 << 20, 'x');
  const struct {
    const char* name;
    std::string list;
  } cases[] = {
      {"513 arrays", Nest(BinaryPlist::kArray, 513)},
      {"513 dictionaries", Nest(BinaryPlist::kDictionary, 513)},
      {"two references to each of 16 arrays", Nest(BinaryPlist::kArray, 16, 2)},
      {"large data, 100,000 times", Repeat(100'000, Counted(BinaryPlist::kData, 1 << 19, large))},
      {"a large UTF-16 string, 100,000 times",
       Repeat(100'000, Counted(BinaryPlist::kUtf16String, 1 << 19, large))},
      {"an array in itself", List({"\xA1\0"s}, 1)},
      {"UTF-16 with a NUL after them", ArrayOf("\x66\0a\0b\0c\0d\0e\0\0"s)},
      {"a UTF-16 key with a NUL", List({"\xD1\1\2", "\x62\0a\0\0"s, "\x09"}, 1)},
  };
  for (const auto& each : cases) EXPECT_FALSE(IsSafe(each.list)) << each.name;
}

TEST(PlistLimits, ListsAreValidWhenLibplistParsesThem) {
  const std::string good = ArrayOf("\x51x");
  const auto changed = [&good](std::size_t from_end, char byte) {
    std::string list = good;
    list[list.size() - from_end] = byte;
    return list;
  };
  const struct {
    const char* name;
    std::string list;
    bool valid;
  } cases[] = {
      {"integers of 1 to 16 bytes",
       List({"\xA5\1\2\3\4\5", "\x10\1", "\x11\1\1", "\x12\1\1\1\1", "\x13" + Times(8, "\1"),
             "\x14" + Times(16, "\1")},
            1),
       true},
      {"an integer that reaches into the table", ArrayOf("\x13\1"), false},
      {"a real that reaches into the table", ArrayOf("\x22\1\1\1"), false},
      {"a date that reaches into the table", ArrayOf("\x33" + Times(7, "\1")), false},
      {"no boolean", ArrayOf("\x07"), false},
      {"a UID of more than 32 bits", ArrayOf("\x84\1\0\0\0\0"s), false},
      {"a UID that reaches into the table", ArrayOf("\x81\1"), false},
      {"an ASCII string that reaches into the table", ArrayOf("\x52x"), false},
      {"an empty UTF-16 string", ArrayOf("\x60"), false},
      {"an array that reaches into the table", List({"\xA3\1", "\x09"}, 1), false},
      {"a dictionary that reaches into the table", List({"\x51k", "\xD2\0\0\0"s}, 1, 1), false},
      {"a count of 8 bytes", ArrayOf(Counted(BinaryPlist::kAsciiString, 1, "x", 3)), true},
      {"a count that is no integer", ArrayOf("\x5F\x20\1x"), false},
      {"a count that reaches into the table", ArrayOf("\x4F\x12\0\0\0"s), false},
      {"an unknown type", ArrayOf("\x71\1"), false},
      {"a key that is no string", List({"\xD1\1\2", "\x09", "\x51x"}, 1), false},
      {"a key that is a dictionary", List({"\xD1\1\2", "\xD0", "\x51x"}, 1), false},
      {"a reference to no object", List({"\xA1\1"}, 1), false},
      {"a root that is no object", List({"\x09"}, 1, 1), false},
      {"an offset size of 0", changed(26, '\0'), false},
      {"a reference size of 0", changed(25, '\0'), false},
      {"a table that reaches into the trailer", changed(17, '\3'), false},
      {"a table offset in the trailer", changed(1, '\x20'), false},
      {"a table offset in the header", changed(1, '\7'), false},
      {"another version", "bplist01" + good.substr(8), false},
      {"too short", good.substr(0, 39), false},
  };
  for (const auto& each : cases) {
    EXPECT_EQ(IsValid(each.list), each.valid) << each.name;
    EXPECT_EQ(Parses(each.list), each.valid) << each.name;
  }
  EXPECT_EQ(IsValid(ArrayOf("\0"s)), Parses(ArrayOf("\0"s))) << "null, which earlier releases reject";
}

// What the library and its host do with the deepest tree.
void HandleDeepest() {
  const TemporaryFolder folder;
  const std::string path = folder.Write("deepest", Nest(BinaryPlist::kDictionary, 512));
  const Libplist::Node root(PlistUtil::ReadPlist(path.c_str()));
  const Libplist::Node copy(PlistUtil::PlistCopyZero(root.get()));
  EXPECT_EQ(plist_dict_get_size(copy.get()), 1U);
}

TEST(PlistLimits, TheDeepestTreeFitsIntoAStackOf512KiB) {
  RunOnStack(512 << 10, HandleDeepest);
}

}  // namespace
