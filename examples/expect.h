// How the examples say what a call gives, so that it is also tested.

#pragma once

#include <cstdlib>

inline void Expect(bool holds) {
  if (!holds) std::abort();
}
