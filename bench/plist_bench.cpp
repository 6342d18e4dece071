// Property lists: reading beside the parser alone, and the node helpers beside libplist's own calls.

#include <plist/plist.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>
#include <string>

#include "common/plist_util.h"
#include "comparison.h"
#include "sample_data.h"

namespace {

struct FreeNode {
  void operator()(void* node) const { plist_free(node); }
};
using Node = std::unique_ptr<void, FreeNode>;

std::string Encoded(plist_t node, bool binary) {
  char* bytes = nullptr;
  std::uint32_t length = 0;
  if (binary) {
    plist_to_bin(node, &bytes, &length);
  } else {
    plist_to_xml(node, &bytes, &length);
  }
  const Text owner(bytes);
  return {bytes, length};
}

// What a device's manifest looks like: an array of dictionaries of texts, numbers, a flag and some data.
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

// The encoded sample tree of about that size.
std::string SampleList(std::size_t size, bool binary) {
  const std::size_t per_entry = Encoded(SampleTree(1000).get(), binary).size() / 1000;
  return Encoded(SampleTree(size / per_entry).get(), binary);
}

// Files for the time of the run.
std::string WrittenFile(const std::string& contents) {
  static const struct Folder {
    Folder() {
      std::string pattern = (std::filesystem::temp_directory_path() / "hostutil-bench-XXXXXX").string();
      if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder");
      path = pattern;
    }
    ~Folder() {
      std::error_code ignored;
      std::filesystem::remove_all(path, ignored);
    }
    std::filesystem::path path;
  } folder;
  static int number = 0;
  const std::filesystem::path path = folder.path / std::to_string(number++);
  std::ofstream(path, std::ios::binary) << contents;
  return path.string();
}

void CompareReading(std::size_t size, bool binary) {
  const std::string& bytes = Kept(SampleList(size, binary));
  const std::string& path = Kept(WrittenFile(bytes));
  const auto describe = [](const auto& job) { return Encoded(job().get(), false); };
  // The floor takes and returns a block of the file's size too, without touching it: when a large block is
  // freed, the allocator tidies up all small ones, and the next tree costs more to build.
  const auto parse = [&bytes, binary] {
    const Text block(static_cast<char*>(std::malloc(bytes.size() + 1)));
    benchmark::DoNotOptimize(block.get());
    plist_t root = nullptr;
    const auto length = static_cast<std::uint32_t>(bytes.size());
    if (binary) {
      plist_from_bin(bytes.data(), length, &root);
    } else {
      plist_from_xml(bytes.data(), length, &root);
    }
    return Node(root);
  };
  // Opening a small file, twice as is promised, takes longer than parsing it.
  const Goal goal = size < 100 * kKiB ? kNoGoal : Goal{1.05, 0};
  Compare("ReadPlist", SizeName(size) + (binary ? ", binary" : ", XML"), goal)
      .Ours([&path] { return Node(PlistUtil::ReadPlist(path.c_str())); }, describe)
      .Peer("floor: the parser, on bytes in memory", parse, describe)
      .Remark(
          "the file is read, opened a second time for its encoding, and looked over for hostile nesting "
          "before the parser sees it");
}

std::int32_t MagicByHand(const char* path) {
  std::FILE* const stream = std::fopen(path, "rb");
  if (stream == nullptr) return 0;
  char start[8];
  const bool binary = std::fread(start, 1, 8, stream) == 8 && std::memcmp(start, "bplist00", 8) == 0;
  std::fclose(stream);
  return binary ? 1 : 0;
}

void PrintByHand(plist_t node) {
  std::puts(".................PrintPlist BEGIN.................");
  char* xml = nullptr;
  std::uint32_t length = 0;
  plist_to_xml(node, &xml, &length);
  std::cout << xml << std::endl;
  std::free(xml);
  std::puts(".................PrintPlist END.................");
}

// What a job writes to the standard output.
template <typename Job>
std::string Printed(const Job& job) {
  std::fflush(stdout);
  const int kept = ::dup(STDOUT_FILENO);
  std::FILE* const file = std::tmpfile();
  ::dup2(::fileno(file), STDOUT_FILENO);
  job();
  std::cout.flush();
  std::fflush(stdout);
  ::dup2(kept, STDOUT_FILENO);
  ::close(kept);
  std::rewind(file);
  std::string text(kMiB, '\0');
  text.resize(std::fread(text.data(), 1, text.size(), file));
  std::fclose(file);
  return text;
}

void ComparePrinting() {
  static const Node tree = SampleTree(10);
  const auto describe = [](const auto& job) { return Printed(job); };
  Compare("PrintPlist", "a tree of 10 dictionaries", kLevel)
      .Ours(
          [] {
            PlistUtil::PrintPlist(tree.get());
            return 0;
          },
          describe)
      .Peer(
          "plist_to_xml, written by hand",
          [] {
            PrintByHand(tree.get());
            return 0;
          },
          describe);
}

template <typename Insert>
auto Into(Node (*container)(), Insert insert) {
  return [container, insert] {
    Node node = container();
    insert(node.get());
    return node;
  };
}

void CompareInsertions() {
  const auto describe = [](const auto& job) { return Encoded(job().get(), false); };
  const auto array = [] { return Node(plist_new_array()); };
  const auto dict = [] { return Node(plist_new_dict()); };
  static constexpr char kPeer[] = "libplist's own call";
  Compare("AppendPlistArrayString", "a new array", kLevel)
      .Ours(Into(array, [](plist_t node) { PlistUtil::AppendPlistArrayString(node, "x"); }), describe)
      .Peer(kPeer, Into(array, [](plist_t node) { plist_array_append_item(node, plist_new_string("x")); }),
            describe);
  Compare("AddNoneValuePlistDictString", "a new dictionary", kLevel)
      .Ours(Into(dict, [](plist_t node) { PlistUtil::AddNoneValuePlistDictString(node, "key", ""); }),
            describe)
      .Peer(kPeer,
            Into(dict, [](plist_t node) { plist_dict_set_item(node, "key", plist_new_string("(None)")); }),
            describe);
  Compare("InsertPlistDictString", "a new dictionary", kLevel)
      .Ours(Into(dict, [](plist_t node) { PlistUtil::InsertPlistDictString(node, "key", "x"); }), describe)
      .Peer(kPeer, Into(dict, [](plist_t node) { plist_dict_set_item(node, "key", plist_new_string("x")); }),
            describe);
}

void CompareNodes() {
  static const Node tree = SampleTree(10);
  static const Node number(plist_new_uint(1700000000));
  static plist_t const dict = plist_array_get_item(tree.get(), 3);
  static constexpr char kPeer[] = "libplist's own call";
  const auto describe = [](const auto& job) { return Encoded(job().get(), false); };
  Compare("PlistCopyZero", "a tree of 10 dictionaries", kLevel)
      .Ours([] { return Node(PlistUtil::PlistCopyZero(tree.get())); }, describe)
      .Peer(
          kPeer, [] { return Node(plist_copy(tree.get())); }, describe);
  Compare("PlistCopyEmptyString", "null", kLevel)
      .Ours([] { return Node(PlistUtil::PlistCopyEmptyString(nullptr)); }, describe)
      .Peer(
          kPeer, [] { return Node(plist_new_string("")); }, describe);
  Compare("GetIntegerValue", "a number", kLevel)
      .Ours([] { return PlistUtil::GetIntegerValue(number.get()); })
      .Peer(kPeer, [] {
        std::uint64_t value = 0;
        plist_get_uint_val(number.get(), &value);
        return value;
      });
  Compare("GetDictOrUidIntegerValue", "a dictionary of 5", kLevel)
      .Ours([] { return PlistUtil::GetDictOrUidIntegerValue(dict, "Size"); })
      .Peer(kPeer, [] {
        std::uint64_t value = 0;
        if (plist_get_node_type(dict) == PLIST_DICT) {
          plist_get_uint_val(plist_dict_get_item(dict, "Size"), &value);
        }
        return value;
      });
}

}  // namespace

void ComparePlists() {
  for (const bool binary : {true, false}) {
    for (const std::size_t size : {kKiB, 100 * kKiB, 10 * kMiB}) CompareReading(size, binary);
  }
  const std::string& path = Kept(WrittenFile(SampleList(kKiB, true)));
  Compare("IsBinPlist", "1 KiB", kLevel)
      .Ours([&path] { return PlistUtil::IsBinPlist(path.c_str()); })
      .Peer("fopen, fread, memcmp", [&path] { return MagicByHand(path.c_str()); });
  CompareInsertions();
  CompareNodes();
  ComparePrinting();
}
