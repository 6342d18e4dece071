// An environment variable for as long as a test needs it.

#pragma once

#include <stdlib.h>

#include <optional>
#include <string>

class ScopedEnvironment {
 public:
  ScopedEnvironment(const char* name, const char* value) : name_(name) {
    if (const char* before = ::getenv(name)) before_ = before;
    ::setenv(name, value, 1);
  }
  ~ScopedEnvironment() {
    if (before_) {
      ::setenv(name_, before_->c_str(), 1);
    } else {
      ::unsetenv(name_);
    }
  }
  ScopedEnvironment(const ScopedEnvironment&) = delete;
  ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

 private:
  const char* name_;
  std::optional<std::string> before_;
};
