#include "manifest_mbdb.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <vector>

#include "common/big_endian_bit_converter.h"
#include "failure.h"
#include "file_status.h"

namespace {

constexpr std::array<unsigned char, 6> kMagic = {'m', 'b', 'd', 'b', 5, 0};

// Offsets in the fixed part of a record, and its size.
enum Field : std::int32_t {
  kMode = 0,
  kInode = 2,
  kUser = 10,
  kGroup = 14,
  kModified = 18,
  kAccessed = 22,
  kCreated = 26,
  kLength = 30,
  kProtection = 38,
  kPropertyCount = 39,
  kFixedSize = 40,
};

class RecordFile final : public Manifest {
 public:
  RecordFile(Stream stream, std::uint64_t size) : stream_(std::move(stream)), size_(size) {}

  bool ReadMagic() {
    const unsigned char* const start = Take(kMagic.size());
    return start != nullptr && std::equal(kMagic.begin(), kMagic.end(), start);
  }

  Next ReadRecord(Entry& entry) override {
    entry.Clear();
    if (ended_ || AtEnd()) return Next::End;
    std::array<unsigned char, kFixedSize> fixed{};
    if (!ReadParts(entry, fixed)) {
      ended_ = true;  // the start of the next record is unknown
      return Next::Truncated;
    }
    using namespace BigEndianBitConverter;
    entry.modified = static_cast<long>(ToUInt32(fixed.data(), kModified));
    const std::int64_t length = ToInt64(fixed.data(), kLength);
    const std::optional<EntryKind> kind = KindOf(ToUInt16(fixed.data(), kMode) >> 12, kRecordKinds);
    if (!kind || length < 0 || !HoldsNoNul(entry)) return Next::Damaged;
    entry.kind = *kind;
    entry.size = static_cast<std::uint64_t>(length);
    return Next::Entry;
  }

  Position Where() override { return {done_, size_}; }

 private:
  static bool HoldsNoNul(const Entry& entry) {
    return entry.domain.find('\0') == std::string::npos && entry.path.find('\0') == std::string::npos;
  }

  // False after a read error, which the next read reports.
  bool AtEnd() { return !Has(1) && std::ferror(stream_.get()) == 0; }

  // Whether the file has `count` more bytes; then they are in the block. REQUIRES: count <= kBlock.
  bool Has(std::size_t count) {
    if (end_ - at_ >= count) return true;
    unsigned char* const block = block_.data();
    end_ = static_cast<std::size_t>(std::copy(block + at_, block + end_, block) - block);
    at_ = 0;
    end_ += std::fread(block + end_, 1, kBlock - end_, stream_.get());
    return end_ >= count;
  }

  // The next bytes of the file, valid until the next call; null when there are fewer.
  const unsigned char* Take(std::size_t count) {
    if (!Has(count)) return nullptr;
    const unsigned char* const bytes = block_.data() + at_;
    at_ += count;
    done_ += count;
    return bytes;
  }

  // Reads a text into `text` unless that is null. A missing text is empty.
  bool ReadText(std::string* text) {
    const unsigned char* const prefix = Take(2);
    if (prefix == nullptr) return false;
    const std::uint16_t length = BigEndianBitConverter::ToUInt16(prefix, 0);
    const unsigned char* const bytes = Take(length == kNoText ? 0 : length);
    if (bytes == nullptr) return false;
    if (text != nullptr && length != kNoText) text->assign(reinterpret_cast<const char*>(bytes), length);
    return true;
  }

  bool ReadParts(Entry& entry, std::array<unsigned char, kFixedSize>& fixed) {
    if (!ReadText(&entry.domain) || !ReadText(&entry.path)) return false;
    for (int text = 0; text < 3; ++text) {  // link target, digest, key
      if (!ReadText(nullptr)) return false;
    }
    const unsigned char* const bytes = Take(kFixedSize);
    if (bytes == nullptr) return false;
    std::copy_n(bytes, kFixedSize, fixed.data());
    for (int text = 0; text < 2 * fixed[kPropertyCount]; ++text) {
      if (!ReadText(nullptr)) return false;
    }
    return true;
  }

  static constexpr std::size_t kBlock = 1 << 17;  // bytes; more than the longest text

  Stream stream_;
  std::uint64_t size_;
  std::uint64_t done_ = 0;
  bool ended_ = false;
  std::vector<unsigned char> block_ = std::vector<unsigned char>(kBlock);
  std::size_t at_ = 0;  // what is between these was read and not taken
  std::size_t end_ = 0;
};

}  // namespace

std::unique_ptr<Manifest> ReadRecords(Stream stream, std::uint64_t size) {
  auto records = std::make_unique<RecordFile>(std::move(stream), size);
  if (!records->ReadMagic()) return nullptr;
  return records;
}

std::unique_ptr<Manifest> OpenManifestMbdb(const std::string& path) {
  Stream stream(std::fopen(path.c_str(), "rb"));
  if (stream == nullptr) throw Failure(path + ": " + std::strerror(errno));
  std::unique_ptr<Manifest> records = ReadRecords(std::move(stream), StatusOf(path).size);
  if (records == nullptr) throw Failure(path + ": is damaged or of an unknown version");
  return records;
}
