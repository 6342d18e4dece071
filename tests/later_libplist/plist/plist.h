// libplist as its later releases declare it: the parsers return an error code. The test defines what they do.

#pragma once

#include_next <plist/plist.h>
#include <cstdint>

enum LaterPlistResult { kLaterPlistSuccess = 0, kLaterPlistFailure = -5 };

LaterPlistResult LaterPlistFromXml(const char* xml, std::uint32_t length, plist_t* plist);
LaterPlistResult LaterPlistFromBin(const char* bin, std::uint32_t length, plist_t* plist);

#define plist_from_xml LaterPlistFromXml
#define plist_from_bin LaterPlistFromBin
