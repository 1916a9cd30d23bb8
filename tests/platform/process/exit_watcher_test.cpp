// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/process/exit_watcher.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <memory>
#include <utility>
#include <vector>

#include "platform/process/spawn.h"
#include "support/event_loop.h"
#include "support/descriptors.h"

namespace platform {
namespace {

Spawned startCommand(std::vector<const char*> argv) {
  const Spawned child =
      spawn(argv.front(), const_cast<char* const*>(argv.data()), STDOUT_FILENO, STDERR_FILENO);
  EXPECT_EQ(child.problem, 0);
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
    EXPECT_EQ(child.problem, 0);
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

struct Counter final : DescriptorWatcher {
  void descriptorReady() override { ++calls; }
  int calls = 0;
};

// A watch of one child.
struct Watch {
  explicit Watch(const Spawned& child) : pid(child.pid) {
    EXPECT_TRUE(end.watch(child.end, counter));
  }
  void await() const {
    support::turnUntil([&] { return counter.calls > 0; });
  }

  pid_t pid;
  Counter counter;
  ExitWatcher end{support::eventLoop()};
};

void turnSomeTimes() {
  for (int turns = 0; turns < 10; ++turns) {
    support::eventLoop().post([] {});
    support::turn();
  }
}

void waitWithoutCollecting(pid_t pid) {
  siginfo_t facts{};
  EXPECT_EQ(waitid(P_PID, static_cast<id_t>(pid), &facts, WEXITED | WNOWAIT), 0);
}

// Collects a child that must have been left to be collected.
void collect(pid_t pid) {
  EXPECT_EQ(waitpid(pid, nullptr, WNOHANG), pid);
}

TEST(ExitWatcher, IsToldWhenItComesAndLeavesTheChildToBeCollected) {
  Gate gate;
  const Watch watch(gate.start());
  turnSomeTimes();
  EXPECT_EQ(watch.counter.calls, 0);
  gate.open();
  watch.await();
  collect(watch.pid);
}

TEST(ExitWatcher, IsToldOfAChildThatEndedBefore) {
  Gate gate;
  gate.open();
  for (int i = 0; i < 2; ++i) {
    const Spawned child = gate.start();
    waitWithoutCollecting(child.pid);
    turnSomeTimes();
    const Watch watch(child);
    EXPECT_EQ(watch.counter.calls, 0);
    watch.await();
    collect(child.pid);
  }
}

TEST(ExitWatcher, IsToldOfEveryOneOfManyThatComeAtOnce) {
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
    waitWithoutCollecting(watch->pid);
  }
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  for (const auto& watch : watches) {
    watch->await();
    collect(watch->pid);
  }
}

TEST(ExitWatcher, OfManyLeavesTheOtherEventsTheirTurns) {
  Gate gate;
  std::vector<std::unique_ptr<Watch>> watches;
  const auto told = [&] {
    return std::count_if(watches.begin(), watches.end(),
                         [](const auto& watch) { return watch->counter.calls > 0; });
  };
  for (int i = 0; i < 200; ++i) {
    watches.push_back(std::make_unique<Watch>(gate.start()));
  }
  gate.open();
  for (const auto& watch : watches) {
    waitWithoutCollecting(watch->pid);
  }
  support::turn();
  EXPECT_LT(told(), 200);
  support::turnUntil([&] { return told() == 200; });
  for (const auto& watch : watches) {
    collect(watch->pid);
  }
}

TEST(ExitWatcher, LetsTheLoopSleepUntilTheNext) {
  Gate gate;
  gate.open();
  {
    const Watch first(gate.start());
    first.await();
    collect(first.pid);
  }
  const Watch second(startCommand({"/bin/sleep", "0.2", nullptr}));
  int turns = 0;
  support::turnUntil([&] {
    ++turns;
    return second.counter.calls > 0;
  });
  // A loop that does not sleep turns thousands of times.
  EXPECT_LT(turns, 100);
  collect(second.pid);
}

TEST(ExitWatcher, IsNotAPause) {
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
  EXPECT_EQ(paused.counter.calls, 0);
  kill(paused.pid, SIGCONT);
  gate.open();
  paused.await();
  collect(paused.pid);
  collect(other.pid);
}

TEST(ExitWatcher, OfAStrangerIsLeftAlone) {
  Gate gate;
  const pid_t stranger = fork();
  if (stranger == 0) {
    _exit(0);
  }
  const Watch watch(gate.start());
  gate.open();
  waitWithoutCollecting(stranger);
  watch.await();
  turnSomeTimes();
  collect(watch.pid);
  collect(stranger);
}

// The first that is told ends the watches of both.
struct Leaver final : DescriptorWatcher {
  void descriptorReady() override {
    ++calls;
    for (ExitWatcher* end : ends) {
      end->unwatch();
    }
  }
  std::vector<ExitWatcher*> ends;
  int calls = 0;
};

TEST(ExitWatcher, IsNotToldAfterTheWatch) {
  Gate gate;
  Leaver leaver;
  ExitWatcher first(support::eventLoop());
  ExitWatcher second(support::eventLoop());
  leaver.ends = {&first, &second};
  const std::array<Spawned, 2> children{gate.start(), gate.start()};
  EXPECT_TRUE(first.watch(children[0].end, leaver));
  EXPECT_TRUE(second.watch(children[1].end, leaver));
  gate.open();
  waitWithoutCollecting(children[0].pid);
  waitWithoutCollecting(children[1].pid);
  support::turnUntil([&] { return leaver.calls > 0; });
  turnSomeTimes();
  EXPECT_EQ(leaver.calls, 1);
  collect(children[0].pid);
  collect(children[1].pid);
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
    collect(watch.pid);
  }
  EXPECT_EQ(support::openDescriptors(), before);
  longer.open();
  waitWithoutCollecting(abandoned.pid);
  collect(abandoned.pid);
  collect(first.pid);
}

}  // namespace
}  // namespace platform
