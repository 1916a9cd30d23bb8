// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/process/pipe.h"

#include <fcntl.h>
#include <unistd.h>

namespace platform {

namespace {

constexpr int largePipeBytes = 1024 * 1024;

}  // namespace

bool openPipe(std::array<int, 2>& ends) {
  return pipe2(ends.data(), O_CLOEXEC) == 0;
}

void enlargePipe(int fd) {
  // Refused where the user has too much in pipes already.
  fcntl(fd, F_SETPIPE_SZ, largePipeBytes);
}

}  // namespace platform
