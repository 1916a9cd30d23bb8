// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/process/pipe.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace platform {

bool openPipe(std::array<int, 2>& ends) {
  if (pipe(ends.data()) != 0) {
    return false;
  }
  // A command started between the two calls would inherit the ends, and its siblings' streams would
  // never end. None is: all are started by the thread that we are in.
  if (fcntl(ends[0], F_SETFD, FD_CLOEXEC) == 0 && fcntl(ends[1], F_SETFD, FD_CLOEXEC) == 0) {
    return true;
  }
  const int problem = errno;
  close(ends[0]);
  close(ends[1]);
  errno = problem;
  return false;
}

void enlargePipe(int /*fd*/) {
  // The size of a pipe is the system's own affair here.
}

}  // namespace platform
