// The host's basic services, as far as this library calls them.
//
// libBasic implements the three interfaces and exports the three accessors. The service objects are
// libBasic's: nobody here keeps, copies or deletes one. An accessor is asked anew before every operation,
//
//   std::uint64_t size = BasUtilityFile()->GetFileSize(path);
//
// so accessors must be cheap, must never return null, and, like every operation, must be callable on any
// thread. Whatever a service throws reaches the host. Texts end with a NUL and cross unchanged.

#pragma once

#include <cstdint>
#include <cstdio>

// Files.
class IBasUtilityFile {
 public:
  // Makes the directory `path`. One that stands there already is no failure; a failure is told to nobody, so
  // this must neither throw nor end the process. `path` has no separator at its end unless it is a backup
  // root itself.
  virtual void CreateDirectory(const char* path) = 0;

  // The number of bytes that reading `path` from its start yields; 0 for what is empty or cannot be read.
  virtual std::uint64_t GetFileSize(const char* path) = 0;

  // A stream as from std::fopen, or null. The caller closes it with std::fclose. `mode` is always "rb" here.
  virtual std::FILE* OpenFile(const char* path, const char* mode) = 0;

 protected:
  ~IBasUtilityFile() = default;
};

// Texts.
class IBasUtilityString {
 public:
  // Takes back what DigestString returned, once.
  virtual void FreeString(char* text) = 0;

  // A digest that depends on `text` alone; never null. It names a stored file, and its first two characters a
  // directory. The service owns the block: hand it back to FreeString.
  virtual char* DigestString(const char* text) = 0;

 protected:
  ~IBasUtilityString() = default;
};

// The machine.
class IBasUtilitySys {
 public:
  // Whether this machine stores the least significant byte of an integer first. Asked once per decoded
  // integer.
  virtual bool IsLittleEndian() = 0;

 protected:
  ~IBasUtilitySys() = default;
};

// Visible to other libraries, whatever a libBasic is compiled with.
#define HOSTUTIL_BASIC_IMPORT __attribute__((visibility("default")))

// The services, which stay libBasic's. Never null.
HOSTUTIL_BASIC_IMPORT IBasUtilityFile* BasUtilityFile();
HOSTUTIL_BASIC_IMPORT IBasUtilityString* BasUtilityString();
HOSTUTIL_BASIC_IMPORT IBasUtilitySys* BasUtilitySys();

#undef HOSTUTIL_BASIC_IMPORT
