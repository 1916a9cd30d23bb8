// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/process_setup.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <optional>

namespace platform {

namespace {

struct DescriptorLimits {
  rlimit starting;
  rlimit raised;
};

std::optional<DescriptorLimits> descriptorLimits;

void openStandardDescriptors() {
  // Opened the wrong way round on purpose: who reads or writes there is told so, as on a closed
  // descriptor.
  for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(fd, F_GETFD) < 0) {
      open("/dev/null", fd == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
  }
}

void raiseDescriptorLimit() {
  rlimit starting{};
  if (descriptorLimits || getrlimit(RLIMIT_NOFILE, &starting) != 0) {
    return;
  }
  const rlimit raised{.rlim_cur = starting.rlim_max, .rlim_max = starting.rlim_max};
  if (raised.rlim_cur != starting.rlim_cur && setrlimit(RLIMIT_NOFILE, &raised) == 0) {
    descriptorLimits = {.starting = starting, .raised = raised};
  }
}

}  // namespace

void setUpProcess() {
  openStandardDescriptors();
  raiseDescriptorLimit();
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  std::signal(SIGCHLD, SIG_DFL);
}

StartingDescriptorLimit::StartingDescriptorLimit() {
  if (descriptorLimits) {
    setrlimit(RLIMIT_NOFILE, &descriptorLimits->starting);
  }
}

StartingDescriptorLimit::~StartingDescriptorLimit() {
  if (descriptorLimits) {
    setrlimit(RLIMIT_NOFILE, &descriptorLimits->raised);
  }
}

}  // namespace platform
