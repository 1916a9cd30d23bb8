// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/process/process_setup.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <optional>
#include <stdexcept>

#include "platform/event_loop/fatal_error.h"
#include "platform/process/termination_signals.h"

namespace platform {

namespace {

// macOS knows no hard limit, yet takes no soft one above its OPEN_MAX, which is this.
constexpr rlim_t fallbackLimit = 10'240;

std::optional<rlimit> startingDescriptorLimit;

void openStandardDescriptors() {
  // Opened the wrong way round on purpose: reading or writing fails there as it does on a closed
  // descriptor.
  for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(fd, F_GETFD) < 0) {
      open("/dev/null", fd == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
  }
}

void raiseDescriptorLimit() {
  rlimit starting{};
  getrlimit(RLIMIT_NOFILE, &starting);
  for (const rlim_t most : {starting.rlim_max, std::min(starting.rlim_max, fallbackLimit)}) {
    const rlimit raised{.rlim_cur = most, .rlim_max = starting.rlim_max};
    if (most > starting.rlim_cur && setrlimit(RLIMIT_NOFILE, &raised) == 0) {
      startingDescriptorLimit = starting;
      return;
    }
  }
}

}  // namespace

void setUpProcess() {
  installTerminateHandler();
  openStandardDescriptors();
  raiseDescriptorLimit();
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  std::signal(SIGCHLD, SIG_DFL);
  handleTerminationSignals();
}

void refuseSetuid() {
  if (getuid() != geteuid()) {
    throw std::runtime_error("it must not be setuid");
  }
}

void restoreStartingDescriptorLimit() {
  if (startingDescriptorLimit) {
    setrlimit(RLIMIT_NOFILE, &*startingDescriptorLimit);
  }
}

}  // namespace platform
