// Property lists: reading a file of either encoding, building, copying, querying and printing nodes.
//
//   plist_t info = PlistUtil::ReadPlist("/backups/1/Info.plist");  // null when it is no property list
//   PlistUtil::InsertPlistDictString(info, "Device Name", name);   // a null name is stored as ""
//   PlistUtil::PrintPlist(info);
//   plist_free(info);
//
// Node arguments stay the caller's. A returned node is new: release it with plist_free or insert it into a
// container. Texts are copied. No function throws anything of its own. Calls from several threads that change
// one tree need a lock of the caller's.

#pragma once

#include <plist/plist.h>

#include <cstdint>

#include "common/export.h"

namespace PlistUtil {

// 1 when the file begins with the eight bytes "bplist00", which mark the binary encoding; 0 otherwise, also
// when it cannot be opened. Opens the file once through the host's file service. Null is the empty path.
HOSTUTIL_EXPORT std::int32_t IsBinPlist(const char* path);

// The tree of a property-list file, or null when
//   - there is no such file, it is empty, or there is no memory for its bytes;
//   - libplist rejects it;
//   - it could exhaust the process: containers nested more than 512 deep, or shared references that expand to
//     far more nodes than the file has bytes;
//   - a string or key in XML, or a UTF-16 string in a binary list, contains a NUL: libplist (2.2.0 to 2.8.0)
//     stores it with a wrong length and aborts when asked for it. A NUL anywhere else does no harm; a binary
//     ASCII string ends at it.
// IsBinPlist alone selects the encoding: a binary list that does not parse is not tried as XML, nor the other
// way round. Reads the whole file into memory and opens it twice. A file of 4 GiB or more is parsed as if its
// size were the low 32 bits. Where the file is shorter than its size, because it shrank or the file service
// lies, zeros follow its bytes and take no memory: XML that is complete before them still parses with
// libplist before 2.8. Null is the empty path.
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

// For a UID node, the index it holds; `key` is ignored. For a dictionary, the unsigned integer under `key`;
// 0 when there is none or the key is null. 0 for every other node and for null. A UID inside a dictionary
// gives 0, too: fetch the item with plist_dict_get_item and pass that.
HOSTUTIL_EXPORT std::uint64_t GetDictOrUidIntegerValue(plist_t node, const char* key);

}  // namespace PlistUtil
