// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The open descriptors of the test's own process.

#pragma once

#include <cstddef>
#include <filesystem>
#include <iterator>
#include <string>
#include <system_error>

namespace support {

/// How many there are, the one that counts them included.
inline std::size_t openDescriptors() {
  const std::filesystem::directory_iterator listing("/proc/self/fd");
  return static_cast<std::size_t>(std::distance(begin(listing), end(listing)));
}

/// How many are open of what /proc shows by a path or a name with `part` in it.
inline std::size_t openDescriptorsOf(const std::string& part) {
  std::size_t count = 0;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code gone;  // the one that lists them
    const auto shown = std::filesystem::read_symlink(entry, gone).string();
    count += shown.find(part) != std::string::npos ? 1 : 0;
  }
  return count;
}

}  // namespace support
