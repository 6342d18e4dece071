// Property lists: reading a file of either encoding, building, copying, querying and printing nodes.
//
//   plist_t info = PlistUtil::ReadPlist("/backups/1/Info.plist");  // null when it is no property list
//   PlistUtil::InsertPlistDictString(info, "Device Name", name);   // a null name is stored as ""
//   PlistUtil::PrintPlist(info);
//   plist_free(info);
//
// A node given as an argument stays the caller's. A node returned is new and the caller's, to be released
// with plist_free or handed to a container. Texts are copied. No function throws anything of its own. Two
// calls that change one tree at the same time must be kept apart by the caller.

#pragma once

#include <plist/plist.h>

#include <cstdint>

#include "common/export.h"

namespace PlistUtil {

// 1 when the file begins with the eight bytes "bplist00", which mark the binary encoding; 0 otherwise, also
// when it cannot be opened. Opens the file once through the host's file service. Null is the empty path.
HOSTUTIL_EXPORT std::int32_t IsBinPlist(const char* path);

// The tree that a property-list file holds, or null: no such file, an empty one, no property list, no memory
// for its bytes, or contents made to exhaust the process (containers nested more than 512 deep, or shared
// references that stand for far more nodes than the file has bytes). The encoding is decided by IsBinPlist
// alone; a binary list that does not parse is not tried as XML, nor the other way round. Reads the whole file
// into memory and opens it twice. A file of 4 GiB or more is parsed as if it had its size's low 32 bits. Null
// is the empty path.
HOSTUTIL_EXPORT plist_t ReadPlist(const char* path);

// Appends a string node; a null value is stored as the empty text. Anything but an array is left alone.
HOSTUTIL_EXPORT void AppendPlistArrayString(plist_t array, const char* value);

// Stores a string node under `key`, in place of what the key held; a null or empty value is stored as
// "(None)". Nothing happens for a null key or for anything but a dictionary.
HOSTUTIL_EXPORT void AddNoneValuePlistDictString(plist_t dict, const char* key, const char* value);

// The same, but a null value is stored as the empty text and an empty value as it is.
HOSTUTIL_EXPORT void InsertPlistDictString(plist_t dict, const char* key, const char* value);

// A deep copy of `node`; for null a new unsigned integer node, 0.
HOSTUTIL_EXPORT plist_t PlistCopyZero(plist_t node);

// A deep copy of `node`; for null a new string node, empty.
HOSTUTIL_EXPORT plist_t PlistCopyEmptyString(plist_t node);

// Writes `node` as XML to standard output between a line "PrintPlist BEGIN" and a line "PrintPlist END", each
// framed by full stops, and flushes. Null writes nothing at all; a node that has no XML form leaves just the
// two lines. The order holds whether or not the C and C++ streams are synchronised.
HOSTUTIL_EXPORT void PrintPlist(plist_t node);

// The value of an unsigned integer node; 0 for every other node and for null.
HOSTUTIL_EXPORT std::uint64_t GetIntegerValue(plist_t node);

// Of a UID node its UID, whatever the key; of a dictionary the unsigned integer under `key`, 0 when there is
// none (or the key is null); 0 for every other node and for null. Note that a UID found inside a dictionary
// gives 0: fetch the item first, then ask for its value.
HOSTUTIL_EXPORT std::uint64_t GetDictOrUidIntegerValue(plist_t node, const char* key);

}  // namespace PlistUtil
