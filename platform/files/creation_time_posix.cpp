// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/files/creation_time.h"

#include <sys/stat.h>

#include "platform/files/birth_time.h"

namespace platform {

std::optional<std::int64_t> creationTimeNs(const std::string& path) {
  struct stat facts {};
  if (lstat(path.c_str(), &facts) != 0) {
    return std::nullopt;
  }
  const std::timespec time = birthTime(facts);
  return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

}  // namespace platform
