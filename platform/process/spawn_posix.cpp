// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>

#include "platform/process/process_setup.h"
#include "platform/process/spawn.h"
#include "platform/process/termination_signals.h"

// Declared by no header everywhere.
extern char** environ;  // NOLINT(readability-redundant-declaration)

namespace platform {

namespace {

// Above every system's default, and few enough to check one by one.
constexpr long descriptorsMax = 1'000'000;

// Makes every descriptor that is open now one that closes when a command begins.
bool closeOnExec() {
  const long most = sysconf(_SC_OPEN_MAX);
  const int end = static_cast<int>(most < 0 ? descriptorsMax : std::min(most, descriptorsMax));
  for (int fd = STDERR_FILENO + 1; fd < end; ++fd) {
    const int flags = fcntl(fd, F_GETFD);
    if (flags >= 0) {
      fcntl(fd, F_SETFD, flags | FD_CLOEXEC);
    }
  }
  return true;
}

// Libraries make this process ignore signals such as SIGPIPE, whose default action a pipeline in a
// command relies on.
void setSignals(posix_spawnattr_t& attributes) {
  sigset_t set;
  sigemptyset(&set);
  posix_spawnattr_setsigmask(&attributes, &set);
  sigfillset(&set);
  for (const int signal : {SIGHUP, SIGINT, SIGQUIT}) {
    if (staysIgnored(signal)) {
      sigdelset(&set, signal);
    }
  }
  posix_spawnattr_setsigdefault(&attributes, &set);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
}

}  // namespace

Spawned spawn(const char* path, char* const* argv, int standardOutput, int standardError) {
  // Once is enough: what the program was started with is open before its first command, and what is
  // opened later, by the program or by a library, is opened so that it closes by itself.
  static const bool done [[maybe_unused]] = closeOnExec();
  posix_spawnattr_t attributes;
  posix_spawn_file_actions_t actions;
  posix_spawnattr_init(&attributes);
  posix_spawn_file_actions_init(&actions);
  setSignals(attributes);
  // Before the limit is lowered, above which it takes no descriptor.
  posix_spawn_file_actions_adddup2(&actions, standardOutput, STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, standardError, STDERR_FILENO);
  // A child inherits the limits of its parent.
  rlimit ours{};
  const bool isLimitKnown = getrlimit(RLIMIT_NOFILE, &ours) == 0;
  if (isLimitKnown) {
    restoreStartingDescriptorLimit();
  }
  Spawned child;
  child.error = posix_spawn(&child.pid, path, &actions, &attributes, argv, environ);
  if (isLimitKnown) {
    setrlimit(RLIMIT_NOFILE, &ours);
  }
  posix_spawn_file_actions_destroy(&actions);
  posix_spawnattr_destroy(&attributes);
  return child;
}

void enlargePipe(int /*fd*/) {}

}  // namespace platform
