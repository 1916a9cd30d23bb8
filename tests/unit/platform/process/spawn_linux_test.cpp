// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <string>

#include "platform/process/spawn.h"
#include "support/held_call.h"
#include "support/limit.h"
#include "support/refused_call.h"

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
    ASSERT_EQ(child.error, 0);
    int status = 0;
    ASSERT_EQ(waitpid(child.pid, &status, 0), child.pid);
    EXPECT_EQ(status, 0);
  }
  close(inheritable[0]);
  close(inheritable[1]);
}

TEST(Spawn, WorksAgainOnceThereAreDescriptors) {
  std::array<const char*, 2> argv{"true", nullptr};
  const auto start = [&argv] {
    return spawn("/bin/true", const_cast<char* const*>(argv.data()), STDOUT_FILENO, STDERR_FILENO);
  };
  int problem = 0;
  {
    const support::Limit none(RLIMIT_NOFILE, 3);
    problem = start().error;
  }
  // The second where an earlier test of this process has taken numbers beyond the limit.
  EXPECT_THAT(problem, testing::AnyOf(EMFILE, EBADF));
  const Spawned child = start();
  ASSERT_EQ(child.error, 0);
  int status = 1;
  ASSERT_EQ(waitpid(child.pid, &status, 0), child.pid);
  EXPECT_EQ(status, 0);
}

Spawned startTrue(int standardOutput, int standardError) {
  std::array<const char*, 2> argv{"true", nullptr};
  return spawn("/bin/true", const_cast<char* const*>(argv.data()), standardOutput, standardError);
}

[[noreturn]] void exitWithWhetherSpawnTellsOfMissingStreams() {
  if (!support::refuseCall(SYS_dup3, EBUSY)) {
    std::_Exit(2);
  }
  const Spawned child = startTrue(STDOUT_FILENO, STDERR_FILENO);
  std::_Exit(child.error == EBUSY && child.pid < 0 ? 0 : 1);
}

// A command without its streams would look like one that prints nothing.
TEST(SpawnDeathTest, FailsIfTheChildCannotBeGivenItsStreams) {
  EXPECT_EXIT(exitWithWhetherSpawnTellsOfMissingStreams(), testing::ExitedWithCode(0), "");
}

[[noreturn]] void exitWithWhetherOurDescriptorsStay() {
  constexpr int firstOfAll = STDERR_FILENO + 1;
  const int ours = open("/", O_PATH | O_CLOEXEC);
  if (!support::refuseCall(SYS_close_range, ENOMEM, firstOfAll)) {
    std::_Exit(2);
  }
  const Spawned child = startTrue(STDOUT_FILENO, STDERR_FILENO);
  std::_Exit(child.error == ENOMEM && fcntl(ours, F_GETFD) >= 0 ? 0 : 1);
}

// What it closes in a table of descriptors that is not its own, it closes for the program.
TEST(SpawnDeathTest, FailsIfTheChildCannotHaveDescriptorsOfItsOwn) {
  EXPECT_EXIT(exitWithWhetherOurDescriptorsStay(), testing::ExitedWithCode(0), "");
}

volatile std::sig_atomic_t handlerRuns = 0;

extern "C" void countRun(int /*signal*/) {
  handlerRuns = handlerRuns + 1;
}

[[noreturn]] void exitWithWhetherAHandlerRunsInAChild() {
  std::signal(SIGUSR1, countRun);
  if (!support::holdCall(SYS_close_range, [](pid_t child) { kill(child, SIGUSR1); })) {
    std::_Exit(2);
  }
  const Spawned child = startTrue(STDOUT_FILENO, STDERR_FILENO);
  int status = 0;
  const bool struck = child.error == 0 && waitpid(child.pid, &status, 0) == child.pid &&
                      WIFSIGNALED(status) && WTERMSIG(status) == SIGUSR1;
  std::_Exit(struck && handlerRuns == 0 ? 0 : 1);
}

// It would look at the memory of the program, in the middle of whatever this is doing.
TEST(SpawnDeathTest, LetsNoHandlerRunInAChild) {
  EXPECT_EXIT(exitWithWhetherAHandlerRunsInAChild(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace platform
