// The entries of a backup's manifest, of either generation. A manifest is not trusted: texts hold any bytes
// (NUL only in a damaged entry), and identifiers are compared but never used as paths.
//
//   std::unique_ptr<Manifest> manifest = OpenManifest(folder);
//   Entry entry;
//   while ((next = manifest->Read(entry)) != Manifest::Next::End) ...

#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "backup_folder.h"

enum class EntryKind { File, Directory, Link };

// The code of each EntryKind: `flags` in the database, and the top four bits of the mode in a record file.
using KindCodes = std::array<std::int64_t, 3>;
inline constexpr KindCodes kDatabaseKinds = {1, 2, 4};
inline constexpr KindCodes kRecordKinds = {0x8, 0x4, 0xA};

inline std::int64_t CodeOf(EntryKind kind, const KindCodes& codes) {
  return codes.at(static_cast<std::size_t>(kind));
}

// None for an unknown code.
inline std::optional<EntryKind> KindOf(std::int64_t code, const KindCodes& codes) {
  for (const EntryKind kind : {EntryKind::File, EntryKind::Directory, EntryKind::Link}) {
    if (CodeOf(kind, codes) == code) return kind;
  }
  return std::nullopt;
}

struct Entry {
  std::string id;  // as the manifest records it; empty in the flat generation
  std::string domain;
  std::string path;
  EntryKind kind = EntryKind::File;
  std::optional<std::uint64_t> size;
  std::optional<long> modified;  // seconds since 1970
  std::string archive = {};      // what Manifest::Decode takes size and modified from

  // As a new entry, with the memory of the old texts.
  void Clear() {
    for (std::string* const text : {&id, &domain, &path, &archive}) text->clear();
    kind = EntryKind::File;
    size.reset();
    modified.reset();
  }
};

class Manifest {
 public:
  enum class Next {
    Entry,
    Damaged,    // an invalid record; the entry holds the fields that could be read
    Truncated,  // invalid, and the records after it cannot be found: End is next
    End,
  };

  // The reading position, in bytes or rows. A total of 0 is unknown.
  struct Position {
    std::uint64_t done;
    std::uint64_t total;
  };

  virtual ~Manifest() = default;
  Next Read(Entry& entry) { return Decode(ReadRecord(entry), entry); }
  virtual Position Where() = 0;

  // The two steps of Read. `next` is the result of the first; the second may run in several threads at once.
  virtual Next ReadRecord(Entry& entry) = 0;
  virtual Next Decode(Next next, Entry& /*entry*/) const { return next; }
};

// The manifest of `folder`. Throws Failure when it cannot be read.
std::unique_ptr<Manifest> OpenManifest(const BackupFolder& folder);

std::unique_ptr<Manifest> OpenManifestDb(const std::string& path);
std::unique_ptr<Manifest> OpenManifestMbdb(const std::string& path);
