// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include <fcntl.h>
#include <sys/stat.h>

#include <filesystem>
#include <system_error>

#include "platform/files.h"

namespace platform {

namespace {

std::int64_t nanoseconds(const statx_timestamp& time) {
  return time.tv_sec * 1'000'000'000 + time.tv_nsec;
}

}  // namespace

std::vector<FolderEntry> listFolder(const std::string& folder) {
  std::vector<FolderEntry> entries;
  std::error_code failed;
  std::filesystem::directory_iterator entry(folder, failed);
  for (; !failed && entry != std::filesystem::directory_iterator(); entry.increment(failed)) {
    struct statx facts {};
    if (statx(AT_FDCWD, entry->path().c_str(), AT_SYMLINK_NOFOLLOW, STATX_BTIME | STATX_CTIME,
              &facts) == 0) {
      const bool hasCreationTime = (facts.stx_mask & STATX_BTIME) != 0;
      entries.push_back(
          {.name = entry->path().filename().string(),
           .createdNs = nanoseconds(hasCreationTime ? facts.stx_btime : facts.stx_ctime)});
    }
  }
  return entries;
}

}  // namespace platform
