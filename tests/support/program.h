// Runs the program hostutil as a user does: from the shell, on a sample backup.

#pragma once

#include "support/temporary_folder.h"

struct ProgramResult {
  int status;  // as the shell tells it: 128 and the number for an end by a signal
  std::string out;
  std::string err;
};

// Three files of the sample, all in HomeDomain.
inline const std::string kNote = "Documents/note-7.txt";
inline const std::string kBinaryList = "Library/Preferences/com.example.app0.plist";
inline const std::string kXmlList = "Library/Preferences/com.example.app5.plist";

// A sample backup in a folder of its own, to be damaged.
struct SampleBackup {
  explicit SampleBackup(const std::string& layout, int files = 40);

  // Runs a line of the shell in the backup's folder. In it `hostutil` is the program, and $note, $binary and
  // $xml are where the three files above are stored. When there is `sql`, the line runs after it and while
  // its connection to Manifest.db is still open.
  ProgramResult Run(const std::string& line, const std::string& sql = "") const;

  // Runs a line that must leave the folder as it is, with all its names, kinds, times and bytes.
  ProgramResult Look(const std::string& line) const;

  TemporaryFolder folder;  // holds the backup in its folder backup
};
