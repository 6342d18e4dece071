// Property lists: reading, and the node helpers, which wrap libplist's own calls.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <iostream>

#include "bench.h"
#include "common/libplist.h"
#include "common/plist_util.h"

namespace {

using Libplist::Node;

// An array of dictionaries of texts, numbers, a flag and some data.
Node SampleTree(std::size_t entries) {
  Node root(plist_new_array());
  const std::string signature = RandomBytes(200);
  for (std::size_t i = 0; i < entries; ++i) {
    plist_t entry = plist_new_dict();
    const std::string path = "Library/Caches/com.example.reader/page" + std::to_string(i) + ".db";
    plist_dict_set_item(entry, "Path", plist_new_string(path.c_str()));
    plist_dict_set_item(entry, "Domain", plist_new_string("HomeDomain"));
    plist_dict_set_item(entry, "Size", plist_new_uint(i * 977));
    plist_dict_set_item(entry, "Encrypted", plist_new_bool(i % 2));
    plist_dict_set_item(entry, "Signature", plist_new_data(signature.data(), signature.size()));
    plist_array_append_item(root.get(), entry);
  }
  return root;
}

std::string SampleList(std::size_t size, bool binary) {
  const auto encode = binary ? plist_to_bin : plist_to_xml;
  const std::size_t per_entry = Libplist::Encoded(SampleTree(1000).get(), encode).size() / 1000;
  return Libplist::Encoded(SampleTree(size / per_entry).get(), encode);
}

std::string WrittenFile(const std::string& contents) {
  static int number = 0;
  const std::string path = TemporaryFolder() + "/list" + std::to_string(number++);
  std::ofstream(path, std::ios::binary) << contents;
  return path;
}

Node Parse(const char* bytes, std::size_t size, bool binary) {
  return Node(
      Libplist::Parse(binary ? plist_from_bin : plist_from_xml, bytes, static_cast<std::uint32_t>(size)));
}

Node ParseByStdio(const std::string& path, bool binary) {
  std::FILE* const stream = std::fopen(path.c_str(), "rb");
  struct stat status {};
  ::fstat(::fileno(stream), &status);
  const auto size = static_cast<std::size_t>(status.st_size);
  const Block bytes(static_cast<char*>(std::malloc(size)));
  const std::size_t length = std::fread(bytes.get(), 1, size, stream);
  std::fclose(stream);
  return Parse(bytes.get(), length, binary);
}

// The least for the service calls that ReadPlist promises: the size of a readable file, its bytes, and the
// first of them again.
Node ParseBySystemCalls(const std::string& path, bool binary) {
  struct stat status {};
  ::stat(path.c_str(), &status);
  if (::access(path.c_str(), R_OK) != 0) return nullptr;
  const Block bytes(static_cast<char*>(std::malloc(static_cast<std::size_t>(status.st_size))));
  ssize_t length = 0;
  for (const off_t size : {status.st_size, off_t{8}}) {
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    length = std::max(length, ::read(file, bytes.get(), static_cast<std::size_t>(size)));
    ::close(file);
  }
  return Parse(bytes.get(), static_cast<std::size_t>(length), binary);
}

void BenchReading(std::size_t size, bool binary) {
  const std::string contents = SampleList(size, binary);
  const std::string path = WrittenFile(contents);
  const std::string name = "ReadPlist/" + SizeName(size) + (binary ? ", binary" : ", XML");
  const auto ours = [=] { return Node(PlistUtil::ReadPlist(path.c_str())); };
  const Peer stdio{"fopen, fread and parse", [=] { return ParseByStdio(path, binary); }};
  const Peer calls{"system calls and parse", [=] { return ParseBySystemCalls(path, binary); }};
  const Peer parse{"parse alone", [=] { return Parse(contents.data(), contents.size(), binary); }};
  if (size > kKiB) return Compare(name, kEqualGoal, ours, stdio, parse);
  Compare(name, "1.2", ours, stdio);
  Compare(name + ", least calls", "1.1", ours, calls);
}

bool MagicByStdio(const char* path) {
  std::FILE* const stream = std::fopen(path, "rb");
  char start[8];
  const bool binary = std::fread(start, 1, 8, stream) == 8 && std::memcmp(start, "bplist00", 8) == 0;
  std::fclose(stream);
  return binary;
}

void BenchHelper(const std::string& name, auto ours, auto other) {
  Compare(name, kCallGoal, ours, Peer{"libplist", other});
}

// Jobs that change a new container and return it.
void BenchInsertion(const std::string& name, plist_t (*container)(), auto ours, auto other) {
  const auto into = [=](auto insert) {
    return [=] {
      Node node(container());
      insert(node.get());
      return node;
    };
  };
  BenchHelper(name, into(ours), into(other));
}

void BenchHelpers() {
  BenchInsertion(
      "AppendPlistArrayString/a new array", plist_new_array,
      [](plist_t node) { PlistUtil::AppendPlistArrayString(node, "x"); },
      [](plist_t node) { plist_array_append_item(node, plist_new_string("x")); });
  BenchInsertion(
      "AddNoneValuePlistDictString/a new dictionary", plist_new_dict,
      [](plist_t node) { PlistUtil::AddNoneValuePlistDictString(node, "key", ""); },
      [](plist_t node) { plist_dict_set_item(node, "key", plist_new_string("(None)")); });
  BenchInsertion(
      "InsertPlistDictString/a new dictionary", plist_new_dict,
      [](plist_t node) { PlistUtil::InsertPlistDictString(node, "key", "x"); },
      [](plist_t node) { plist_dict_set_item(node, "key", plist_new_string("x")); });

  static const Node tree = SampleTree(10);
  static const Node number(plist_new_uint(1700000000));
  static plist_t const entry = plist_array_get_item(tree.get(), 3);
  const auto value = [](plist_t node) {
    std::uint64_t result = 0;
    plist_get_uint_val(node, &result);
    return result;
  };
  BenchHelper(
      "PlistCopyZero/10 dictionaries", [] { return Node(PlistUtil::PlistCopyZero(tree.get())); },
      [] { return Node(plist_copy(tree.get())); });
  BenchHelper(
      "PlistCopyEmptyString/null", [] { return Node(PlistUtil::PlistCopyEmptyString(nullptr)); },
      [] { return Node(plist_new_string("")); });
  BenchHelper(
      "GetIntegerValue/a number", [] { return PlistUtil::GetIntegerValue(number.get()); },
      [=] { return value(number.get()); });
  BenchHelper(
      "GetDictOrUidIntegerValue/a dictionary of 5",
      [] { return PlistUtil::GetDictOrUidIntegerValue(entry, "Size"); },
      [=] { return value(plist_dict_get_item(entry, "Size")); });
  // scripts/bench sends the standard output to /dev/null.
  BenchHelper(
      "PrintPlist/10 dictionaries", [] { return PlistUtil::PrintPlist(tree.get()), 0; },
      [] {
        std::puts(".................PrintPlist BEGIN.................");
        std::cout << Libplist::Encoded(tree.get()) << std::endl;
        std::puts(".................PrintPlist END.................");
        return 0;
      });
}

const bool kRegistered = [] {
  for (const bool binary : {true, false}) {
    for (const std::size_t size : {kKiB, 100 * kKiB, kMiB, 10 * kMiB}) BenchReading(size, binary);
  }
  const std::string path = WrittenFile(SampleList(kKiB, true));
  Compare(
      "IsBinPlist/1 KiB", kEqualGoal, [=] { return PlistUtil::IsBinPlist(path.c_str()) == 1; },
      Peer{"fopen, fread and memcmp", [=] { return MagicByStdio(path.c_str()); }});
  BenchHelpers();
  return true;
}();

}  // namespace
