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

// More than any system hands out unless told to, and still looked through within a blink.
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

// No signal is blocked or ignored.
class SpawnAttributes {
 public:
  SpawnAttributes() {
    posix_spawnattr_init(&attributes);
    sigset_t set;
    sigemptyset(&set);
    posix_spawnattr_setsigmask(&attributes, &set);
    // Libraries ignore signals behind our back, SIGPIPE for one; a shell pipeline in a command
    // relies on the default.
    sigfillset(&set);
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT}) {
      if (staysIgnored(signal)) {
        sigdelset(&set, signal);
      }
    }
    posix_spawnattr_setsigdefault(&attributes, &set);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  }
  ~SpawnAttributes() { posix_spawnattr_destroy(&attributes); }
  SpawnAttributes(const SpawnAttributes&) = delete;
  SpawnAttributes& operator=(const SpawnAttributes&) = delete;

  posix_spawnattr_t attributes;
};

// The two given descriptors are standard output and standard error.
class SpawnFiles {
 public:
  SpawnFiles(int standardOutput, int standardError) {
    posix_spawn_file_actions_init(&actions);
    // Without one of them the child would write where we do.
    problem = posix_spawn_file_actions_adddup2(&actions, standardOutput, STDOUT_FILENO);
    if (problem == 0) {
      problem = posix_spawn_file_actions_adddup2(&actions, standardError, STDERR_FILENO);
    }
  }
  ~SpawnFiles() { posix_spawn_file_actions_destroy(&actions); }
  SpawnFiles(const SpawnFiles&) = delete;
  SpawnFiles& operator=(const SpawnFiles&) = delete;

  posix_spawn_file_actions_t actions;
  int problem;
};

// A child takes the limit of its parent: while this lives, ours on descriptors is the one that the
// program was started with.
class StartingDescriptorLimit {
 public:
  StartingDescriptorLimit() : isKnown(getrlimit(RLIMIT_NOFILE, &ours) == 0) {
    if (isKnown) {
      restoreStartingDescriptorLimit();
    }
  }
  ~StartingDescriptorLimit() {
    if (isKnown) {
      setrlimit(RLIMIT_NOFILE, &ours);
    }
  }
  StartingDescriptorLimit(const StartingDescriptorLimit&) = delete;
  StartingDescriptorLimit& operator=(const StartingDescriptorLimit&) = delete;

 private:
  rlimit ours{};
  bool isKnown;
};

}  // namespace

Spawned spawn(const char* path, char* const* argv, int standardOutput, int standardError) {
  // Once is enough: what the program was started with is open before its first command, and what is
  // opened later, by the program or by the toolkit, is opened so that it closes by itself.
  static const bool done [[maybe_unused]] = closeOnExec();
  const SpawnAttributes spawnAttributes;
  const SpawnFiles files(standardOutput, standardError);
  const StartingDescriptorLimit limit;
  Spawned child;
  child.error = files.problem;
  if (child.error == 0) {
    child.error =
        posix_spawn(&child.pid, path, &files.actions, &spawnAttributes.attributes, argv, environ);
  }
  child.exitHandle = child.pid;
  return child;
}

}  // namespace platform
