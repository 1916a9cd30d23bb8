// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The creation time among the facts of a file. POSIX has none; some of its systems do.

#pragma once

#include <ctime>

namespace platform {

/// When a file with these facts, a `struct stat`, was created. macOS tells; elsewhere it is when
/// the status last changed.
template <class Facts>
std::timespec birthTime(const Facts& facts) {
  if constexpr (requires { facts.st_birthtimespec; }) {
    return facts.st_birthtimespec;
  } else {
    return facts.st_ctim;
  }
}

}  // namespace platform
