// A call of every function of the library with the expected result, for tests of what holds for all of them.

#pragma once

#include <functional>
#include <string>
#include <vector>

struct LibraryCall {
  const char* name;
  std::function<std::string()> call;
  std::string result;  // when no allocation fails
  // The possible outcomes when an allocation fails; empty for a call that allocates nothing.
  std::vector<std::string> failed = {"bad_alloc"};
};

const std::vector<LibraryCall>& EveryFunction();

// Whether the calling thread is in the library, not in the test code around it.
inline constinit thread_local bool inside_library_call = false;
