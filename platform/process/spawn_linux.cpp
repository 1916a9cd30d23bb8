// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include <fcntl.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>

#include "platform/process/process_setup.h"
#include "platform/process/spawn.h"
#include "platform/process/termination_signals.h"

// posix_spawn gives the child a copy of the whole descriptor table, with three entries for each
// running command, so that the time to start thousands grew with the square of their number. This
// child shares the table, and copies only its first few entries.

namespace platform {

namespace {

// Two descriptors with small numbers, which a child's output is given for as long as it is being
// started: what the child has to copy ends with them. In the meantime the numbers are copies of
// standard input, so that nothing else gets them.
class LowDescriptors {
 public:
  // False when the system has no descriptors left; it may have some another time.
  bool lend(int standardOutput, int standardError) {
    for (int* number : {&output, &error}) {
      if (*number < 0) {
        *number = fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0);
      }
    }
    return output >= 0 && error >= 0 && dup3(standardOutput, output, O_CLOEXEC) >= 0 &&
           dup3(standardError, error, O_CLOEXEC) >= 0;
  }

  void takeBack() const {
    dup3(STDIN_FILENO, output, O_CLOEXEC);
    dup3(STDIN_FILENO, error, O_CLOEXEC);
  }

  int output = -1;
  int error = -1;
};

struct Start {
  const LowDescriptors& low;
  const char* path;
  char* const* argv;
  int error = 0;
};

// Libraries make this process ignore signals such as SIGPIPE, whose default action a pipeline in a
// command relies on. The two signals of the C library refuse, and are never changed.
void resetSignals() {
  for (int signal = 1; signal < NSIG; ++signal) {
    if (!staysIgnored(signal)) {
      std::signal(signal, SIG_DFL);
    }
  }
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
}

// Runs in the child, on memory that it shares with the parent, which waits meanwhile.
int runChild(void* context) {
  auto& start = *static_cast<Start*>(context);
  const auto behindLow = static_cast<unsigned>(std::max(start.low.output, start.low.error)) + 1;
  if (close_range(behindLow, ~0U, CLOSE_RANGE_UNSHARE) == 0 &&
      dup2(start.low.output, STDOUT_FILENO) >= 0 && dup2(start.low.error, STDERR_FILENO) >= 0 &&
      // Ours are closed on exec anyway; this also keeps out what the program was started with.
      close_range(STDERR_FILENO + 1, ~0U, 0) == 0 &&
      // The program may be ended in ways that leave it no time to end its commands.
      prctl(PR_SET_PDEATHSIG, SIGTERM) == 0) {
    restoreStartingDescriptorLimit();
    resetSignals();
    execve(start.path, start.argv, environ);
  }
  start.error = errno;
  _exit(127);
}

}  // namespace

Spawned spawn(const char* path, char* const* argv, int standardOutput, int standardError) {
  static LowDescriptors low;
  alignas(std::max_align_t) static std::array<std::byte, 64UL * 1024> stack;
  Start start{.low = low, .path = path, .argv = argv};
  Spawned child;
  // No signal handler of ours may run on the child's side of the shared memory.
  const SignalsBlocked duringTheStart;
  if (low.lend(standardOutput, standardError)) {
    child.pid = clone(runChild, stack.data() + stack.size(),
                      CLONE_VM | CLONE_VFORK | CLONE_FILES | SIGCHLD, &start);
  }
  child.error = child.pid < 0 ? errno : start.error;
  low.takeBack();
  if (child.pid > 0 && child.error != 0) {
    waitpid(child.pid, nullptr, 0);
  }
  return child;
}

void enlargePipe(int fd) {
  // Refused where the user has too much in pipes already.
  fcntl(fd, F_SETPIPE_SZ, 1024 * 1024);
}

}  // namespace platform
