// Owner types of the resources that the program gets from C interfaces.

#pragma once

#include <sqlite3.h>

#include <new>
#include <string>

#include "common/libplist.h"
#include "common/owners.h"

using Owners::Block;
using Owners::Stream;
using Plist = Libplist::Node;
using Database = Owners::Owner<sqlite3, sqlite3_close_v2>;
using Statement = Owners::Owner<sqlite3_stmt, sqlite3_finalize>;

// A copy of `text`, which is freed. Null, an allocation that failed, throws std::bad_alloc.
inline std::string AdoptText(char* text) {
  const Block block(text);
  if (block == nullptr) throw std::bad_alloc();
  return block.get();
}
