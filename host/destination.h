// The folder that files are extracted into, at DOMAIN/PATH below it. Domains and paths are not trusted:
// folders are made and opened one by one without following links, and files are created exclusively. So
// nothing outside the folder changes, and nothing that exists is overwritten.
//
//   const auto destination = OpenDestination("files", "backup", false);
//   NewFile file;
//   if (destination->MakeFile(*NameBelow("HomeDomain", "a.txt"), file) == Destination::Result::Made) ...

#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "descriptor.h"

// A file being written; removed by the destructor unless it was finished. The functions throw Failure when
// the system fails. REQUIRES: destroyed before the next call of the destination.
class NewFile {
 public:
  NewFile() = default;
  ~NewFile();
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  int descriptor() const { return file_.get(); }
  void Write(const char* bytes, std::size_t count);
  void SetTime(long modified);  // seconds since 1970
  void Finish();

 private:
  friend class DestinationFolder;
  [[noreturn]] void Fail() const;

  Descriptor file_;
  int folder_ = -1;   // the destination owns it
  std::string name_;  // in that folder; empty when there is no file to remove
  std::string path_;  // for messages
};

class Destination {
 public:
  enum class Result {
    Made,
    UnsafePath,  // the file system refuses the name
    Conflict,    // the place is taken, or a file is where a folder is needed
  };

  virtual ~Destination() = default;

  // Both make missing folders on the way, take a result of NameBelow, and throw Failure when the system
  // fails.
  virtual Result MakeFolder(const std::string& name) = 0;  // Made, too, when the folder exists
  virtual Result MakeFile(const std::string& name, NewFile& file) = 0;
};

// Opens `path`, a new folder or an empty one outside the folder `root`. Throws Failure for any other.
// With `dry_run`, writes nothing and returns what writing would.
std::unique_ptr<Destination> OpenDestination(const std::string& path, const std::string& root, bool dry_run);

// "DOMAIN/PATH"; only the domain for an empty path. None unless the domain is one name, the path's parts are
// names, and none is "." or "..".
std::optional<std::string> NameBelow(const std::string& domain, const std::string& path);
