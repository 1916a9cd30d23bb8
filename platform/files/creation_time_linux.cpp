// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/files/creation_time.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace platform {

std::optional<std::int64_t> creationTimeNs(const std::string& path) {
  struct statx facts {};
  if (statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, STATX_BTIME | STATX_CTIME, &facts) != 0) {
    return std::nullopt;
  }
  const bool isKept = (facts.stx_mask & STATX_BTIME) != 0;
  const statx_timestamp& time = isKept ? facts.stx_btime : facts.stx_ctime;
  return time.tv_sec * 1'000'000'000 + time.tv_nsec;
}

}  // namespace platform
