// Writes backups whose manifests hold chosen entries.

#pragma once

#include <fmt/format.h>

#include "host/sample_manifest.h"
#include "support/program.h"

inline Entry EntryOf(const std::string& domain, const std::string& path, EntryKind kind = EntryKind::File,
                     std::uint64_t size = 1, long modified = 1700000000) {
  return {"", domain, path, kind, size, modified};
}

// A backup with these entries. Each file is stored, with one byte.
struct BackupOf : SampleBackup {
  BackupOf(const std::string& layout, const std::vector<Entry>& entries) : SampleBackup(layout, 0) {
    const bool two_level = layout == "two-level";
    const std::string root = folder.Path("backup/");
    std::filesystem::remove(root + (two_level ? "Manifest.db" : "Manifest.mbdb"));
    const auto manifest = two_level ? WriteManifestDb(root) : WriteManifestMbdb(root);
    std::string sql;
    for (Entry entry : entries) {
      const std::string id = Utils::CalcFileID(entry.domain.c_str(), entry.path.c_str());
      if (entry.kind == EntryKind::File) {
        std::ofstream(Utils::ConcatBackupFilePath(root.c_str(), id.c_str(), two_level, true)) << 'x';
      }
      if (two_level) sql += SetPath(entry);
      manifest->Add(entry, "target");
    }
    manifest->Finish();
    if (two_level) Run("", sql);
  }

 private:
  // An entry may be listed twice, so the table's key is a number. The archive that Add writes cannot hold a
  // path that is not UTF-8, so the path is set by the statement that is returned.
  std::string SetPath(Entry& entry) {
    entry.id = std::to_string(++rows_);
    std::string hexadecimal;
    for (const char byte : std::exchange(entry.path, "")) {
      hexadecimal += fmt::format("{:02x}", static_cast<unsigned char>(byte));
    }
    return "UPDATE Files SET relativePath=CAST(x'" + hexadecimal + "' AS TEXT) WHERE fileID='" + entry.id +
           "';";
  }

  int rows_ = 0;
};
