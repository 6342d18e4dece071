// Property lists: reading, and the node helpers, which wrap libplist's own calls.

#include <fcntl.h>
#include <plist/plist.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <iostream>

#include "bench.h"
#include "common/plist_util.h"

namespace {

struct FreeNode {
  void operator()(void* node) const { plist_free(node); }
};

std::string Encoded(plist_t node, bool binary) {
  char* bytes = nullptr;
  std::uint32_t length = 0;
  binary ? plist_to_bin(node, &bytes, &length) : plist_to_xml(node, &bytes, &length);
  const Text owner = Own(bytes);
  return {bytes, length};
}

// Owns a tree; equal to another when their XML is.
struct Node : std::unique_ptr<void, FreeNode> {
  using unique_ptr::unique_ptr;
  friend bool operator==(const Node& left, const Node& right) {
    return left && right && Encoded(left.get(), false) == Encoded(right.get(), false);
  }
};

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
  const std::size_t per_entry = Encoded(SampleTree(1000).get(), binary).size() / 1000;
  return Encoded(SampleTree(size / per_entry).get(), binary);
}

std::string WrittenFile(const std::string& contents) {
  static int number = 0;
  const std::string path = TemporaryFolder() + "/list" + std::to_string(number++);
  std::ofstream(path, std::ios::binary) << contents;
  return path;
}

Node Parse(const char* bytes, std::size_t size, bool binary) {
  plist_t root = nullptr;
  (binary ? plist_from_bin : plist_from_xml)(bytes, static_cast<std::uint32_t>(size), &root);
  return Node(root);
}

std::size_t SizeOf(int file) {
  struct stat status {};
  return ::fstat(file, &status) == 0 ? static_cast<std::size_t>(status.st_size) : 0;
}

Node ParseByStdio(const std::string& path, bool binary) {
  std::FILE* const stream = std::fopen(path.c_str(), "rb");
  const std::size_t size = SizeOf(::fileno(stream));
  const Text bytes = Own(static_cast<char*>(std::malloc(size)));
  const std::size_t length = std::fread(bytes.block.get(), 1, size, stream);
  std::fclose(stream);
  return Parse(bytes.block.get(), length, binary);
}

// The least for the service calls that ReadPlist promises: the size, the bytes, and the first bytes again.
Node ParseBySystemCalls(const std::string& path, bool binary) {
  struct stat status {};
  ::stat(path.c_str(), &status);
  const Text bytes = Own(static_cast<char*>(std::malloc(static_cast<std::size_t>(status.st_size))));
  ssize_t length = 0;
  for (const off_t size : {status.st_size, off_t{8}}) {
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    length = std::max(length, ::read(file, bytes.block.get(), static_cast<std::size_t>(size)));
    ::close(file);
  }
  return Parse(bytes.block.get(), static_cast<std::size_t>(length), binary);
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
  if (stream == nullptr) return false;
  char start[8];
  const bool binary = std::fread(start, 1, 8, stream) == 8 && std::memcmp(start, "bplist00", 8) == 0;
  std::fclose(stream);
  return binary;
}

int PrintByHand(plist_t node) {
  char* xml = nullptr;
  std::uint32_t length = 0;
  plist_to_xml(node, &xml, &length);
  std::puts(".................PrintPlist BEGIN.................");
  std::cout << xml << std::endl;
  std::puts(".................PrintPlist END.................");
  std::free(xml);
  return 0;
}

// A job that changes a new container and returns it.
template <typename Insert>
auto Into(plist_t (*container)(), Insert insert) {
  return [=] {
    Node node(container());
    insert(node.get());
    return node;
  };
}

template <typename Ours, typename Other>
void BenchHelper(const std::string& name, Ours ours, Other other) {
  Compare(name, kCallGoal, ours, Peer{"libplist", other});
}

void BenchHelpers() {
  const auto append = [](plist_t node) { plist_array_append_item(node, plist_new_string("x")); };
  const auto none = [](plist_t node) { plist_dict_set_item(node, "key", plist_new_string("(None)")); };
  const auto insert = [](plist_t node) { plist_dict_set_item(node, "key", plist_new_string("x")); };
  const auto our_append = [](plist_t node) { PlistUtil::AppendPlistArrayString(node, "x"); };
  const auto our_none = [](plist_t node) { PlistUtil::AddNoneValuePlistDictString(node, "key", ""); };
  const auto our_insert = [](plist_t node) { PlistUtil::InsertPlistDictString(node, "key", "x"); };
  const auto array = plist_new_array;
  const auto dict = plist_new_dict;
  BenchHelper("AppendPlistArrayString/a new array", Into(array, our_append), Into(array, append));
  BenchHelper("AddNoneValuePlistDictString/a new dictionary", Into(dict, our_none), Into(dict, none));
  BenchHelper("InsertPlistDictString/a new dictionary", Into(dict, our_insert), Into(dict, insert));

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

  // Not by Compare, which would print. scripts/bench sends the standard output to /dev/null.
  const auto print = [] { return PlistUtil::PrintPlist(tree.get()), 0; };
  Register("PrintPlist/10 dictionaries/HostUtil", kCallGoal, print);
  Register("PrintPlist/10 dictionaries/plist_to_xml and std::cout", "",
           [] { return PrintByHand(tree.get()); });
}

}  // namespace

void RegisterPlists() {
  for (const bool binary : {true, false}) {
    for (const std::size_t size : {kKiB, 100 * kKiB, kMiB, 10 * kMiB}) BenchReading(size, binary);
  }
  const std::string path = WrittenFile(SampleList(kKiB, true));
  Compare(
      "IsBinPlist/1 KiB", kEqualGoal, [=] { return PlistUtil::IsBinPlist(path.c_str()) == 1; },
      Peer{"fopen, fread and memcmp", [=] { return MagicByStdio(path.c_str()); }});
  BenchHelpers();
}
