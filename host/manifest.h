// What a backup says it holds, entry by entry, whichever generation it is of. A manifest is not trusted:
// texts hold any bytes, NUL only in a damaged entry, and identifiers are only there to be compared.
//
//   std::unique_ptr<Manifest> manifest = OpenManifest(folder);
//   Entry entry;
//   while ((next = manifest->Read(entry)) != Manifest::Next::End) ...

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "backup_files.h"

enum class EntryKind { File, Directory, Link };

struct Entry {
  std::string id;  // the manifest's own word for it; empty where the generation has none
  std::string domain;
  std::string path;
  EntryKind kind = EntryKind::File;
  std::optional<std::uint64_t> size;
  std::optional<long> modified;  // seconds since 1970
};

class Manifest {
 public:
  enum class Next {
    Entry,
    Damaged,    // a record that cannot be used; the entry holds what is known of it
    BrokenOff,  // the same, and what follows it cannot be read: the end is next
    End,
  };

  // How far the reading is, in a unit of the manifest's own. A total of 0 is not known.
  struct Position {
    std::uint64_t done;
    std::uint64_t total;
  };

  virtual ~Manifest() = default;
  virtual Next Read(Entry& entry) = 0;
  virtual Position Where() = 0;

  // Whether this generation stores its files in two levels of folders.
  virtual bool TwoLevel() const = 0;
};

// The backup's manifest: Manifest.db, or else Manifest.mbdb. Throws Failure when there is none to read.
std::unique_ptr<Manifest> OpenManifest(const BackupFolder& folder);

std::unique_ptr<Manifest> OpenManifestDb(const std::string& path);
std::unique_ptr<Manifest> OpenManifestMbdb(const std::string& path);
