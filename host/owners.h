// Owner types of the resources that the program gets from C interfaces.

#pragma once

#include <plist/plist.h>
#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>
#include <string>

struct CloseStream {
  void operator()(std::FILE* stream) const { std::fclose(stream); }
};
using Stream = std::unique_ptr<std::FILE, CloseStream>;

struct FreeBlock {
  void operator()(void* block) const { std::free(block); }
};
using Block = std::unique_ptr<char, FreeBlock>;

struct FreePlist {
  using pointer = plist_t;
  void operator()(plist_t node) const { plist_free(node); }
};
using Plist = std::unique_ptr<plist_t, FreePlist>;

struct CloseDatabase {
  void operator()(sqlite3* database) const { sqlite3_close_v2(database); }
};
using Database = std::unique_ptr<sqlite3, CloseDatabase>;

struct FinalizeStatement {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Statement = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;

// A copy of `text`, which is freed. Null, an allocation that failed, throws std::bad_alloc.
inline std::string AdoptText(char* text) {
  const Block block(text);
  if (block == nullptr) throw std::bad_alloc();
  return block.get();
}
