// Where a backup stores a file. The identifier is the SHA-1 digest of the libBasic stand-in.

#include "common/utils/backup_layout.h"

#include "expect.h"

int main() {
  std::string id = Utils::CalcFileID("HomeDomain", "Library/notes.db");
  Expect(Utils::ConcatBackupFilePath("/backups/1/", id.c_str(), true, false) ==
         "/backups/1/4c/4c936ec5e49eb87cae13d3d20531f0618e04222e");
}
