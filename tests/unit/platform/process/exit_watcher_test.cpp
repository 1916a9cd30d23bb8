// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/process/exit_watcher.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <memory>
#include <utility>
#include <vector>

#include "platform/process/spawn.h"
#include "support/descriptors.h"
#include "support/event_loop.h"

namespace platform {
namespace {

Spawned startCommand(std::vector<const char*> argv) {
  const Spawned child =
      spawn(argv.front(), const_cast<char* const*>(argv.data()), STDOUT_FILENO, STDERR_FILENO);
  EXPECT_EQ(child.error, 0);
  return child;
}

// Holds back the children that are started behind it until it is opened.
class Gate {
 public:
  Gate() {
    std::array<int, 2> ends;
    EXPECT_EQ(pipe(ends.data()), 0);
    input = ends[0];
    writeEnd = ends[1];
    // They would hold it shut for each other.
    fcntl(writeEnd, F_SETFD, FD_CLOEXEC);
  }
  ~Gate() {
    open();
    close(input);
  }
  Gate(const Gate&) = delete;
  Gate& operator=(const Gate&) = delete;

  Spawned start() const {
    std::array<const char*, 2> argv{"cat", nullptr};
    const int before = dup(STDIN_FILENO);
    dup2(input, STDIN_FILENO);
    const Spawned child =
        spawn("/bin/cat", const_cast<char* const*>(argv.data()), STDOUT_FILENO, STDERR_FILENO);
    dup2(before, STDIN_FILENO);
    close(before);
    EXPECT_EQ(child.error, 0);
    return child;
  }

  void open() {
    if (writeEnd >= 0) {
      close(std::exchange(writeEnd, -1));
    }
  }

 private:
  int input;
  int writeEnd;
};

// A watch of one child.
struct Watch {
  explicit Watch(const Spawned& child) : pid(child.pid) {
    end.watch(child.pid, [this] { ++calls; });
  }
  void await() const {
    support::turnUntil([&] { return calls > 0; });
  }

  pid_t pid;
  int calls = 0;
  ExitWatcher end{support::eventLoop()};
};

void turnSomeTimes() {
  for (int turns = 0; turns < 10; ++turns) {
    support::eventLoop().post([] {});
    support::turn();
  }
}

void waitWithoutReaping(pid_t pid) {
  siginfo_t facts{};
  EXPECT_EQ(waitid(P_PID, static_cast<id_t>(pid), &facts, WEXITED | WNOWAIT), 0);
}

// Reaps a child that must not have been reaped yet.
void reap(pid_t pid) {
  EXPECT_EQ(waitpid(pid, nullptr, WNOHANG), pid);
}

TEST(ExitWatcher, CallsItsHandlerAtTheExitAndDoesNotReapTheChild) {
  Gate gate;
  const Watch watch(gate.start());
  turnSomeTimes();
  EXPECT_EQ(watch.calls, 0);
  gate.open();
  watch.await();
  reap(watch.pid);
}

TEST(ExitWatcher, ReportsAChildThatExitedBefore) {
  Gate gate;
  gate.open();
  for (int i = 0; i < 2; ++i) {
    const Spawned child = gate.start();
    waitWithoutReaping(child.pid);
    turnSomeTimes();
    const Watch watch(child);
    EXPECT_EQ(watch.calls, 0);
    watch.await();
    reap(child.pid);
  }
}

TEST(ExitWatcher, ReportsEachOfManyThatExitAtOnce) {
  Gate gate;
  std::vector<std::unique_ptr<Watch>> watches;
  for (int i = 0; i < 200; ++i) {
    watches.push_back(std::make_unique<Watch>(gate.start()));
  }
  // While it is blocked, the system keeps one single signal for them all.
  sigset_t blocked;
  sigset_t before;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGCHLD);
  pthread_sigmask(SIG_BLOCK, &blocked, &before);
  gate.open();
  for (const auto& watch : watches) {
    waitWithoutReaping(watch->pid);
  }
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  for (const auto& watch : watches) {
    watch->await();
    reap(watch->pid);
  }
}

// More of them than libuv's own pipe holds.
TEST(ExitWatcher, ReportsAnExitHoweverManySignalsCameBefore) {
  Gate gate;
  const Watch watch(gate.start());
  for (int i = 0; i < 100'000; ++i) {
    kill(getpid(), SIGCHLD);
  }
  gate.open();
  waitWithoutReaping(watch.pid);
  watch.await();
  reap(watch.pid);
}

TEST(ExitWatcher, LetsTheLoopSleepUntilTheNext) {
  Gate gate;
  gate.open();
  {
    const Watch first(gate.start());
    first.await();
    reap(first.pid);
  }
  const Watch second(startCommand({"/bin/sleep", "0.2", nullptr}));
  int turns = 0;
  support::turnUntil([&] {
    ++turns;
    return second.calls > 0;
  });
  // A loop that does not sleep turns thousands of times.
  EXPECT_LT(turns, 100);
  reap(second.pid);
}

TEST(ExitWatcher, TakesAStoppedChildForARunningOne) {
  Gate gate;
  Gate open;
  open.open();
  const Watch paused(gate.start());
  kill(paused.pid, SIGSTOP);
  siginfo_t facts{};
  EXPECT_EQ(waitid(P_PID, static_cast<id_t>(paused.pid), &facts, WSTOPPED | WNOWAIT), 0);
  // The end of another has everybody looked at.
  const Watch other(open.start());
  other.await();
  turnSomeTimes();
  EXPECT_EQ(paused.calls, 0);
  kill(paused.pid, SIGCONT);
  gate.open();
  paused.await();
  reap(paused.pid);
  reap(other.pid);
}

TEST(ExitWatcher, LeavesOtherChildrenAlone) {
  Gate gate;
  const pid_t stranger = fork();
  if (stranger == 0) {
    _exit(0);
  }
  const Watch watch(gate.start());
  gate.open();
  waitWithoutReaping(stranger);
  watch.await();
  turnSomeTimes();
  reap(watch.pid);
  reap(stranger);
}

TEST(ExitWatcher, CallsNothingAfterUnwatch) {
  Gate gate;
  ExitWatcher first(support::eventLoop());
  ExitWatcher second(support::eventLoop());
  int calls = 0;
  // Whichever is called first ends both watches.
  const auto leave = [&] {
    ++calls;
    first.unwatch();
    second.unwatch();
  };
  const std::array<Spawned, 2> children{gate.start(), gate.start()};
  first.watch(children[0].pid, leave);
  second.watch(children[1].pid, leave);
  gate.open();
  waitWithoutReaping(children[0].pid);
  waitWithoutReaping(children[1].pid);
  support::turnUntil([&] { return calls > 0; });
  turnSomeTimes();
  EXPECT_EQ(calls, 1);
  reap(children[0].pid);
  reap(children[1].pid);
}

TEST(ExitWatcher, LeavesNoDescriptorBehind) {
  Gate gate;
  Gate longer;
  gate.open();
  const Watch first(gate.start());
  first.await();
  const std::size_t before = support::openDescriptors();
  const Spawned abandoned = longer.start();
  {
    const Watch watch(gate.start());
    const Watch given(abandoned);
    watch.await();
    reap(watch.pid);
  }
  EXPECT_EQ(support::openDescriptors(), before);
  longer.open();
  waitWithoutReaping(abandoned.pid);
  reap(abandoned.pid);
  reap(first.pid);
}

}  // namespace
}  // namespace platform
