// The least that a look at a two-level backup takes: every row of the manifest, a stat of every stored file,
// every property list parsed. What `hostutil inspect` takes is measured against it (inspect_scale.sh).
//
//   inspect_baseline ROOT

#include <plist/plist.h>
#include <sqlite3.h>
#include <strings.h>
#include <sys/stat.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

namespace {

bool Parses(const char* bytes, std::size_t length) {
  plist_t node = nullptr;
  static_cast<void>(plist_from_memory(bytes, static_cast<std::uint32_t>(length), &node));
  const bool parsed = node != nullptr;
  plist_free(node);
  return parsed;
}

bool FileParses(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
  return Parses(bytes.data(), bytes.size());
}

std::string TextOf(sqlite3_stmt* row, int column) {
  const unsigned char* const text = sqlite3_column_text(row, column);
  return text != nullptr ? reinterpret_cast<const char*>(text) : "";
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const std::string root = std::string(argv[1]) + '/';
  sqlite3* database = nullptr;
  sqlite3_stmt* row = nullptr;
  if (sqlite3_open_v2((root + "Manifest.db").c_str(), &database, SQLITE_OPEN_READONLY, nullptr) !=
          SQLITE_OK ||
      sqlite3_prepare_v2(database, "SELECT fileID, domain, relativePath, flags, file FROM Files", -1, &row,
                         nullptr) != SQLITE_OK) {
    std::fprintf(stderr, "inspect_baseline: %s\n", sqlite3_errmsg(database));
    return 2;
  }
  std::size_t present = 0;
  std::size_t parsed = 0;
  while (sqlite3_step(row) == SQLITE_ROW) {
    const std::string id = TextOf(row, 0);
    const std::string path = TextOf(row, 2);
    const auto length = static_cast<std::size_t>(sqlite3_column_bytes(row, 4));
    parsed += Parses(static_cast<const char*>(sqlite3_column_blob(row, 4)), length) ? 1U : 0U;
    struct stat status {};
    const std::string stored = root + id.substr(0, 2) + '/' + id;
    if (sqlite3_column_int(row, 3) != 1 || ::stat(stored.c_str(), &status) != 0) continue;
    ++present;
    const bool is_list = path.size() >= 6 && ::strcasecmp(path.c_str() + path.size() - 6, ".plist") == 0;
    if (is_list) parsed += FileParses(stored) ? 1U : 0U;
  }
  std::printf("%zu present, %zu property lists\n", present, parsed);
  sqlite3_finalize(row);
  sqlite3_close(database);
  return 0;
}
