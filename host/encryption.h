// Encrypted backups, which the program does not read.

#pragma once

#include "backup_folder.h"

// Throws Failure when the backup's Manifest.plist says that it is encrypted. One that is missing, damaged,
// unreadable or a link says nothing.
void RefuseEncrypted(const BackupFolder& folder);
