// The exit statuses, and the exception for unreadable input and bad usage.

#pragma once

#include <stdexcept>
#include <string>

// Printed as one line on standard error; exit status 2. REQUIRES: thrown before any output.
struct Failure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// How a command ended.
enum class ExitStatus : int { Fine = 0, Problems = 1, Failed = 2 };
