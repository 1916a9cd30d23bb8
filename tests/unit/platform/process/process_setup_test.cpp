// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/process/process_setup.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

namespace platform {
namespace {

[[noreturn]] void openMissingStandardDescriptors() {
  for (const int fd : {0, 1, 2}) {
    close(fd);
  }
  setUpProcess();
  char byte = 0;
  const bool readable = read(0, &byte, 1) >= 0;
  const bool writable = write(1, &byte, 1) >= 0 || write(2, &byte, 1) >= 0;
  std::_Exit(!readable && !writable && dup(0) > 2 ? 0 : 1);
}

// Each case begins in a process of its own, since the set-up is one of the process.
TEST(ProcessSetupDeathTest, OpensMissingStandardDescriptors) {
  EXPECT_EXIT(openMissingStandardDescriptors(), testing::ExitedWithCode(0), "");
}

// If the system reaped a command by itself, another process could get its number while the program
// still sends it signals.
TEST(ProcessSetupDeathTest, KeepsEndedCommandsWhateverTheProgramWasStartedWith) {
  EXPECT_EXIT(
      {
        std::signal(SIGCHLD, SIG_IGN);
        setUpProcess();
        const pid_t child = fork();
        if (child == 0) {
          std::_Exit(0);
        }
        std::_Exit(waitpid(child, nullptr, 0) == child ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

TEST(ProcessSetup, RaisesTheLimitOnDescriptors) {
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  EXPECT_EQ(limit.rlim_cur, limit.rlim_max);
}

TEST(ProcessSetup, TurnsClosedPipesAndFullQuotasIntoErrors) {
  struct sigaction action{};
  for (const int signal : {SIGPIPE, SIGXFSZ}) {
    sigaction(signal, nullptr, &action);
    EXPECT_EQ(action.sa_handler, SIG_IGN);
  }
}

}  // namespace
}  // namespace platform
