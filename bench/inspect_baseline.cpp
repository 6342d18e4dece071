// The least work of an inspection: scan the manifest, stat each stored file, read the bytes of each property
// list. Nothing is parsed or reported. With --scan: the manifest alone, the least work of `list`.
//
//   inspect_baseline [--scan] ROOT

#include <fcntl.h>
#include <sqlite3.h>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <string_view>

#include "common/utils/backup_layout.h"

namespace {

bool look_at_files = true;
std::size_t entries = 0;
std::size_t present = 0;
std::size_t bytes_read = 0;

void Look(const std::string& stored, std::string_view path) {
  struct stat status {};
  if (::stat(stored.c_str(), &status) != 0) return;
  ++present;
  if (path.size() < 6 || ::strncasecmp(path.data() + path.size() - 6, ".plist", 6) != 0) return;
  const int file = ::open(stored.c_str(), O_RDONLY | O_CLOEXEC);
  char buffer[65536];
  for (ssize_t length; (length = ::read(file, buffer, sizeof buffer)) > 0;) {
    bytes_read += static_cast<std::size_t>(length);
  }
  ::close(file);
}

std::string_view TextOf(sqlite3_stmt* row, int column) {
  const unsigned char* const text = sqlite3_column_text(row, column);
  return text != nullptr ? reinterpret_cast<const char*>(text) : "";
}

bool ScanDatabase(const std::string& root) {
  sqlite3* database = nullptr;
  sqlite3_stmt* row = nullptr;
  const char* const query = "SELECT fileID, domain, relativePath, flags, file FROM Files";
  const std::string path = root + "Manifest.db";
  if (sqlite3_open_v2(path.c_str(), &database, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) return false;
  if (sqlite3_prepare_v2(database, query, -1, &row, nullptr) != SQLITE_OK) return false;
  while (sqlite3_step(row) == SQLITE_ROW) {
    ++entries;
    const std::string id(TextOf(row, 0));
    static_cast<void>(TextOf(row, 1));
    static_cast<void>(sqlite3_column_blob(row, 4));
    if (sqlite3_column_int(row, 3) != 1 || !look_at_files) continue;
    Look(root + id.substr(0, 2) + '/' + id, TextOf(row, 2));
  }
  sqlite3_finalize(row);
  sqlite3_close(database);
  return true;
}

// A record: five texts, 40 bytes with the mode first and the number of properties last, the properties' names
// and values. A text: its length in two bytes, FFFF for none.
bool ScanRecords(const std::string& root) {
  std::ifstream stream(root + "Manifest.mbdb", std::ios::binary | std::ios::ate);
  std::string bytes(stream ? static_cast<std::size_t>(stream.tellg()) : 0, '\0');
  stream.seekg(0).read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  std::size_t at = 6;
  const auto byte = [&](std::size_t index) { return static_cast<unsigned char>(bytes.at(index)); };
  const auto text = [&] {
    const std::size_t length = byte(at) * 256U + byte(at + 1);
    at += 2;
    const std::string_view found = std::string_view(bytes).substr(at, length == 0xFFFF ? 0 : length);
    at += found.size();
    return found;
  };
  while (at < bytes.size()) {
    ++entries;
    const std::string_view domain = text();
    const std::string_view path = text();
    for (int skipped = 0; skipped < 3; ++skipped) text();
    const bool is_file = byte(at) >> 4 == 8;
    at += 40;
    for (int properties = 2 * byte(at - 1); properties > 0; --properties) text();
    if (is_file && look_at_files)
      Look(root + Utils::CalcFileID(std::string(domain).c_str(), std::string(path).c_str()), path);
  }
  return !bytes.empty();
}

}  // namespace

int main(int argc, char** argv) {
  look_at_files = argc < 2 || std::string_view(argv[1]) != "--scan";
  if (argc != (look_at_files ? 2 : 3)) return 2;
  const std::string root = std::string(argv[argc - 1]) + '/';
  const bool scanned =
      ::access((root + "Manifest.db").c_str(), F_OK) == 0 ? ScanDatabase(root) : ScanRecords(root);
  if (!scanned) return 2;
  std::printf("%zu entries, %zu present, %zu bytes read\n", entries, present, bytes_read);
  return 0;
}
