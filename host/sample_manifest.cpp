#include "sample_manifest.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <limits>

#include "common/plist_util.h"
#include "common/utils.h"
#include "failure.h"
#include "manifest_mbdb.h"

namespace {

std::uint16_t ModeOf(const Entry& entry) {
  const int permissions = entry.kind == EntryKind::File ? 0644 : 0755;
  return static_cast<std::uint16_t>(CodeOf(entry.kind, kRecordKinds) << 12 | permissions);
}

// The keyed archive for the `file` column: objects refer to one another by index.
std::string KeyedArchive(const Entry& entry) {
  const plist_t file = plist_new_dict();
  plist_dict_set_item(file, "Size", plist_new_uint(entry.size.value_or(0)));
  plist_dict_set_item(file, "LastModified",
                      plist_new_uint(static_cast<std::uint64_t>(entry.modified.value_or(0))));
  plist_dict_set_item(file, "Mode", plist_new_uint(ModeOf(entry)));
  plist_dict_set_item(file, "UserID", plist_new_uint(501));
  plist_dict_set_item(file, "GroupID", plist_new_uint(501));
  plist_dict_set_item(file, "ProtectionClass", plist_new_uint(3));
  plist_dict_set_item(file, "RelativePath", plist_new_uid(2));

  const plist_t objects = plist_new_array();
  PlistUtil::AppendPlistArrayString(objects, "$null");
  plist_array_append_item(objects, file);
  PlistUtil::AppendPlistArrayString(objects, entry.path.c_str());
  const plist_t top = plist_new_dict();
  plist_dict_set_item(top, "root", plist_new_uid(1));

  const Plist archive(plist_new_dict());
  plist_dict_set_item(archive.get(), "$version", plist_new_uint(100000));
  PlistUtil::InsertPlistDictString(archive.get(), "$archiver", "NSKeyedArchiver");
  plist_dict_set_item(archive.get(), "$top", top);
  plist_dict_set_item(archive.get(), "$objects", objects);
  return Libplist::Encoded(archive.get(), plist_to_bin);
}

class DatabaseWriter final : public ManifestWriter {
 public:
  explicit DatabaseWriter(std::string path) : path_(std::move(path)) {
    sqlite3* opened = nullptr;
    const int code = sqlite3_open(path_.c_str(), &opened);
    database_.reset(opened);
    Check(code, SQLITE_OK);
    // No journal: an interrupted sample is simply made again.
    Run("PRAGMA journal_mode=OFF");
    Run("PRAGMA synchronous=OFF");
    Run("BEGIN");
    Run("CREATE TABLE Files(fileID TEXT PRIMARY KEY, domain TEXT, relativePath TEXT, flags INTEGER, file "
        "BLOB)");
    sqlite3_stmt* prepared = nullptr;
    Check(sqlite3_prepare_v2(opened, "INSERT INTO Files VALUES(?,?,?,?,?)", -1, &prepared, nullptr),
          SQLITE_OK);
    insert_.reset(prepared);
  }

  void Add(const Entry& entry, const std::string& /*target*/) override {
    const std::string archive = KeyedArchive(entry);
    BindText(1, entry.id);
    BindText(2, entry.domain);
    BindText(3, entry.path);
    sqlite3_bind_int64(insert_.get(), 4, CodeOf(entry.kind, kDatabaseKinds));
    sqlite3_bind_blob64(insert_.get(), 5, archive.data(), archive.size(), SQLITE_TRANSIENT);
    Check(sqlite3_step(insert_.get()), SQLITE_DONE);
    sqlite3_reset(insert_.get());
  }

  void Finish() override { Run("COMMIT"); }

 private:
  void Check(int code, int expected) {
    if (code != expected) throw Failure(fmt::format("{}: {}", path_, sqlite3_errmsg(database_.get())));
  }
  void Run(const char* sql) {
    Check(sqlite3_exec(database_.get(), sql, nullptr, nullptr, nullptr), SQLITE_OK);
  }
  void BindText(int column, const std::string& text) {
    sqlite3_bind_text64(insert_.get(), column, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
  }

  std::string path_;
  Database database_;
  Statement insert_;
};

class RecordWriter final : public ManifestWriter {
 public:
  explicit RecordWriter(std::string path) : path_(std::move(path)), stream_(std::fopen(path_.c_str(), "wb")) {
    if (stream_ == nullptr) Fail();
    record_.assign("mbdb\x05\0", 6);
  }

  void Add(const Entry& entry, const std::string& target) override {
    AddText(entry.domain);
    AddText(entry.path);
    if (entry.kind == EntryKind::Link) {
      AddText(target);
    } else {
      AddNumber<std::uint16_t>(kNoText);
    }
    AddNumber<std::uint16_t>(kNoText);  // digest
    AddNumber<std::uint16_t>(kNoText);  // key
    AddNumber<std::uint16_t>(ModeOf(entry));
    AddNumber<std::uint64_t>(++inode_);
    AddNumber<std::uint32_t>(501);  // user
    AddNumber<std::uint32_t>(501);  // group
    for (int time = 0; time < 3; ++time) AddNumber(static_cast<std::uint32_t>(entry.modified.value_or(0)));
    AddNumber<std::uint64_t>(entry.size.value_or(0));
    AddNumber<std::uint8_t>(3);  // protection class
    AddNumber<std::uint8_t>(0);  // properties
    if (std::fwrite(record_.data(), 1, record_.size(), stream_.get()) != record_.size()) Fail();
    record_.clear();
  }

  void Finish() override {
    if (std::fclose(stream_.release()) != 0) Fail();
  }

 private:
  [[noreturn]] void Fail() const { throw Failure(path_ + ": " + std::strerror(errno)); }

  template <typename Number>
  void AddNumber(Number number) {
    for (int shift = std::numeric_limits<Number>::digits - 8; shift >= 0; shift -= 8) {
      record_ += static_cast<char>(static_cast<unsigned char>(number >> shift));
    }
  }

  void AddText(const std::string& text) {
    AddNumber(static_cast<std::uint16_t>(text.size()));
    record_ += text;
  }

  std::string path_;
  Stream stream_;
  std::string record_;
  std::uint64_t inode_ = 0;
};

}  // namespace

std::unique_ptr<ManifestWriter> WriteManifestDb(const std::string& root) {
  return std::make_unique<DatabaseWriter>(AdoptText(Utils::ConcatFilePath(root.c_str(), "Manifest.db")));
}

std::unique_ptr<ManifestWriter> WriteManifestMbdb(const std::string& root) {
  return std::make_unique<RecordWriter>(AdoptText(Utils::ConcatFilePath(root.c_str(), "Manifest.mbdb")));
}
