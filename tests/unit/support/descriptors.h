// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The open descriptors of the test's own process.

#pragma once

#include <cstddef>
#include <filesystem>
#include <iterator>

namespace support {

/// How many there are, the one that counts them included.
inline std::size_t openDescriptors() {
  const std::filesystem::directory_iterator listing("/proc/self/fd");
  return static_cast<std::size_t>(std::distance(begin(listing), end(listing)));
}

}  // namespace support
