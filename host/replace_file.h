// Writes a file as a whole: what was there before stays until the new contents are complete.

#pragma once

#include <string>
#include <string_view>

// Replaces or creates the regular file at `path`: writes a temporary file in its folder and renames it.
// Throws Failure when that fails or when something other than a regular file is there; the temporary file is
// removed and `path` is as it was.
void ReplaceFile(const std::string& path, std::string_view contents);
