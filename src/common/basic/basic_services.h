// The operations of the host's basic services that this library calls.
//
// libBasic implements the three interfaces, exports the three accessors and owns the service objects. The
// library keeps no pointer to one but calls the accessor before every operation:
//
//   std::uint64_t size = BasUtilityFile()->GetFileSize(path);
//
// REQUIRES of libBasic: accessors are cheap and never return null; accessors and operations may be called on
// any thread. What a service throws reaches the host. Texts are NUL-terminated and passed on unchanged.

#pragma once

#include <cstdint>
#include <cstdio>

// Files.
class IBasUtilityFile {
 public:
  // Makes the directory `path`; that it exists already is no failure. Failures are not reported, so this must
  // neither throw nor end the process. `path` ends with a separator only for an empty identifier, when it is
  // the backup's root.
  virtual void CreateDirectory(const char* path) = 0;

  // The number of bytes to read in the file `path`; 0 when it is empty or cannot be read.
  virtual std::uint64_t GetFileSize(const char* path) = 0;

  // A stream as from std::fopen, which the caller closes with std::fclose; null on failure. `mode` is always
  // "rb".
  virtual std::FILE* OpenFile(const char* path, const char* mode) = 0;

 protected:
  ~IBasUtilityFile() = default;
};

// Texts.
class IBasUtilityString {
 public:
  // Frees a result of DigestString; called once for each.
  virtual void FreeString(char* text) = 0;

  // A digest that depends on `text` alone, as a text that FreeString frees; never null. Used as the name of a
  // file, and its first two characters as that of a directory.
  virtual char* DigestString(const char* text) = 0;

 protected:
  ~IBasUtilityString() = default;
};

// The machine.
class IBasUtilitySys {
 public:
  // Whether this machine is little-endian. Called once for every decoded integer.
  virtual bool IsLittleEndian() = 0;

 protected:
  ~IBasUtilitySys() = default;
};

// Exported from libBasic even when it is compiled with hidden visibility.
#define HOSTUTIL_BASIC_IMPORT __attribute__((visibility("default")))

// The services; libBasic owns them. Never null.
HOSTUTIL_BASIC_IMPORT IBasUtilityFile* BasUtilityFile();
HOSTUTIL_BASIC_IMPORT IBasUtilityString* BasUtilityString();
HOSTUTIL_BASIC_IMPORT IBasUtilitySys* BasUtilitySys();

#undef HOSTUTIL_BASIC_IMPORT
