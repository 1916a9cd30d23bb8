// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/spawn.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string>

#include "support/limit.h"

namespace platform {
namespace {

// Not even what a library has opened without care.
TEST(Spawn, PassesOnNoDescriptorThatWasOpenedToBePassedOn) {
  std::array<int, 2> inheritable;
  ASSERT_EQ(pipe(inheritable.data()), 0);
  const std::string line = "test ! -e /proc/self/fd/" + std::to_string(inheritable[0]) +
                           " && test ! -e /proc/self/fd/" + std::to_string(inheritable[1]);
  for (int i = 0; i < 2; ++i) {
    std::array<const char*, 4> argv{"sh", "-c", line.c_str(), nullptr};
    const Spawned child =
        spawn("/bin/sh", const_cast<char* const*>(argv.data()), STDOUT_FILENO, STDERR_FILENO);
    ASSERT_EQ(child.problem, 0);
    int status = 0;
    ASSERT_EQ(waitpid(child.pid, &status, 0), child.pid);
    EXPECT_EQ(status, 0);
    close(child.end);
  }
  close(inheritable[0]);
  close(inheritable[1]);
}

TEST(Spawn, WorksAgainOnceThereAreDescriptors) {
  std::array<const char*, 2> argv{"true", nullptr};
  const auto start = [&argv] {
    return spawn("/bin/true", const_cast<char* const*>(argv.data()), STDOUT_FILENO, STDERR_FILENO);
  };
  {
    const support::Limit none(RLIMIT_NOFILE, 3);
    EXPECT_EQ(start().problem, EMFILE);
  }
  const Spawned child = start();
  ASSERT_EQ(child.problem, 0);
  int status = 1;
  ASSERT_EQ(waitpid(child.pid, &status, 0), child.pid);
  EXPECT_EQ(status, 0);
  close(child.end);
}

}  // namespace
}  // namespace platform
