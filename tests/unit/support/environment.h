// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// An environment variable that is set for the time of a test.

#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace support {

class ScopedVariable {
 public:
  ScopedVariable(const char* variable, const char* value) : name(variable) {
    if (const char* old = std::getenv(name)) {
      before = old;
    }
    set(value);
  }
  ~ScopedVariable() { set(before ? before->c_str() : nullptr); }
  ScopedVariable(const ScopedVariable&) = delete;
  ScopedVariable& operator=(const ScopedVariable&) = delete;

 private:
  void set(const char* value) const {
    if (value == nullptr) {
      unsetenv(name);
    } else {
      setenv(name, value, 1);
    }
  }

  const char* name;
  std::optional<std::string> before;
};

}  // namespace support
