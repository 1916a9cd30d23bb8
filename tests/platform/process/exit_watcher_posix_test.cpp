// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/process/exit_watcher.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>

#include "support/event_loop.h"

namespace platform {
namespace {

struct Counter final : DescriptorWatcher {
  void descriptorReady() override { ++calls; }
  int calls = 0;
};

// A child that has ended when it is waited for, or ends once it is.
void awaitEnd(bool endsByItself) {
  const pid_t pid = fork();
  if (pid == 0) {
    while (!endsByItself) {
      pause();
    }
    _exit(0);
  }
  Counter counter;
  ExitWatcher end(support::eventLoop());
  EXPECT_TRUE(end.watch(pid, counter));
  kill(pid, endsByItself ? 0 : SIGKILL);
  support::turnUntil([&] { return counter.calls > 0; });
  EXPECT_EQ(waitpid(pid, nullptr, WNOHANG), pid);
}

// In a process of its own, in which nobody has asked for the signal yet.
TEST(ChildEndDeathTest, IsToldEvenIfTheProgramWasStartedWithTheSignalBlocked) {
  EXPECT_EXIT(
      {
        sigset_t blocked;
        sigemptyset(&blocked);
        sigaddset(&blocked, SIGCHLD);
        pthread_sigmask(SIG_BLOCK, &blocked, nullptr);
        awaitEnd(false);
        std::_Exit(0);
      },
      testing::ExitedWithCode(0), "");
}

TEST(ExitWatcher, IsToldHoweverManySignalsComeBeforeTheNextTurn) {
  awaitEnd(true);
  for (int i = 0; i < 100'000; ++i) {
    kill(getpid(), SIGCHLD);
  }
  awaitEnd(false);
}

TEST(ExitWatcher, LeavesTheReasonOfAFailedCallAlone) {
  awaitEnd(true);
  // Until the pipe is full, and the handler's own call fails.
  for (int i = 0; i < 100'000; ++i) {
    errno = EDOM;
    kill(getpid(), SIGCHLD);
    ASSERT_EQ(errno, EDOM);
  }
}

}  // namespace
}  // namespace platform
