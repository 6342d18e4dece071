// Each function of the library called once, with the answer it has to give: for tests of what holds for all
// of them.

#pragma once

#include <functional>
#include <string>
#include <vector>

struct LibraryCall {
  const char* name;
  std::function<std::string()> call;
  std::string result;  // with all the memory it wants
  // What a call may give that got no memory; empty: it asks for none.
  std::vector<std::string> failed = {"bad_alloc"};
};

const std::vector<LibraryCall>& EveryFunction();

// Whether the calling thread is in the library rather than in the test around it.
inline constinit thread_local bool inside_library_call = false;
