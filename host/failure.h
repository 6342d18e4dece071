// What ends a command: unreadable input or unwritable output.

#pragma once

#include <stdexcept>
#include <string>

// Told to the user as one line on standard error; the exit status is 2. Thrown before anything was printed.
struct Failure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// How a command ended.
enum class ExitStatus : int { Fine = 0, Problems = 1, Failed = 2 };
