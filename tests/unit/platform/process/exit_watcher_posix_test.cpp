// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "platform/process/exit_watcher.h"
#include "support/event_loop.h"

namespace platform {
namespace {

// A child that has ended when it is waited for, or ends once it is.
void awaitEnd(bool endsByItself) {
  const pid_t pid = fork();
  if (pid == 0) {
    while (!endsByItself) {
      pause();
    }
    _exit(0);
  }
  int calls = 0;
  ExitWatcher end(support::eventLoop());
  end.watch(pid, [&] { ++calls; });
  kill(pid, endsByItself ? 0 : SIGKILL);
  support::turnUntil([&] { return calls > 0; });
  EXPECT_EQ(waitpid(pid, nullptr, WNOHANG), pid);
}

TEST(ExitWatcher, ReportsAnExitHoweverManySignalsCameBefore) {
  awaitEnd(true);
  for (int i = 0; i < 100'000; ++i) {
    kill(getpid(), SIGCHLD);
  }
  awaitEnd(false);
}

}  // namespace
}  // namespace platform
