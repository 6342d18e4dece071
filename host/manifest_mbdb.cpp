#include "manifest_mbdb.h"

#include <array>
#include <cerrno>
#include <cstring>

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
    std::array<unsigned char, kMagic.size()> start{};
    return ReadBytes(start.data(), start.size()) && start == kMagic;
  }

  Next Read(Entry& entry) override {
    entry.Clear();
    if (ended_ || AtEnd()) return Next::End;
    std::array<unsigned char, kFixedSize> fixed{};
    if (!ReadRecord(entry, fixed)) {
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

  bool AtEnd() {
    const int next = std::getc(stream_.get());
    if (next == EOF) return std::ferror(stream_.get()) == 0;  // the next read reports a read error
    std::ungetc(next, stream_.get());
    return false;
  }

  bool ReadBytes(void* bytes, std::size_t count) {
    if (std::fread(bytes, 1, count, stream_.get()) != count) return false;
    done_ += count;
    return true;
  }

  // A missing text is empty.
  bool ReadText(std::string& text) {
    std::array<unsigned char, 2> prefix{};
    text.clear();
    if (!ReadBytes(prefix.data(), prefix.size())) return false;
    const std::uint16_t length = BigEndianBitConverter::ToUInt16(prefix.data(), 0);
    if (length == kNoText) return true;
    text.resize(length);
    if (ReadBytes(text.data(), length)) return true;
    text.clear();
    return false;
  }

  bool ReadRecord(Entry& entry, std::array<unsigned char, kFixedSize>& fixed) {
    std::string& unused = scratch_;
    if (!ReadText(entry.domain) || !ReadText(entry.path)) return false;
    for (int text = 0; text < 3; ++text) {  // link target, digest, key
      if (!ReadText(unused)) return false;
    }
    if (!ReadBytes(fixed.data(), fixed.size())) return false;
    for (int text = 0; text < 2 * fixed[kPropertyCount]; ++text) {
      if (!ReadText(unused)) return false;
    }
    return true;
  }

  Stream stream_;
  std::uint64_t size_;
  std::uint64_t done_ = 0;
  bool ended_ = false;
  std::string scratch_;
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
  if (records == nullptr) throw Failure(path + ": is not a record file");
  return records;
}
