// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Limits that the system sets for a process.

#pragma once

#include <sys/resource.h>

namespace support {

/// Lowers a soft limit of the test's own process while it lives.
class Limit {
 public:
  Limit(__rlimit_resource what, rlim_t value) : resource(what) {
    getrlimit(resource, &before);
    const rlimit lowered{.rlim_cur = value, .rlim_max = before.rlim_max};
    setrlimit(resource, &lowered);
  }
  ~Limit() { setrlimit(resource, &before); }
  Limit(const Limit&) = delete;
  Limit& operator=(const Limit&) = delete;

 private:
  __rlimit_resource resource;
  rlimit before{};
};

}  // namespace support
