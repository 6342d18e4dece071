// Internal. Owner types for what C interfaces hand out: released when the owner goes out of scope.
//
//   const Owners::Stream stream(std::fopen(path, "rb"));
//   const Owners::Owner<sqlite3_stmt, sqlite3_finalize> statement(prepared);

#pragma once

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <type_traits>

namespace Owners {

template <auto kRelease>
struct Release {
  template <typename T>
  void operator()(T* resource) const {
    static_cast<void>(kRelease(resource));
  }
};

// Calls `kRelease` on a resource that is not null.
template <typename T, auto kRelease>
using Owner = std::unique_ptr<T, Release<kRelease>>;

using Stream = Owner<std::FILE, std::fclose>;
using Block = Owner<char, std::free>;  // from malloc

}  // namespace Owners
