// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/process/pipe.h"

#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "support/refused_call.h"

namespace platform {
namespace {

// The number that the next descriptor gets. Listing them takes the call that is refused here.
int nextDescriptor() {
  const int next = dup(STDIN_FILENO);
  close(next);
  return next;
}

[[noreturn]] void exitWithWhetherItIsRefused() {
  const int before = nextDescriptor();
  if (!support::refuseCall(SYS_fcntl, EIO)) {
    std::_Exit(2);
  }
  std::array<int, 2> ends;
  const bool isRefused = !openPipe(ends) && errno == EIO;
  std::_Exit(isRefused && nextDescriptor() == before ? 0 : 1);
}

// A command that inherits an end of another one's pipe keeps that from ending.
TEST(PipeDeathTest, IsNotOpenedIfCommandsWouldInheritIt) {
  EXPECT_EXIT(exitWithWhetherItIsRefused(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace platform
