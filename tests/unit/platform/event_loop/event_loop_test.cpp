// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/event_loop/event_loop.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/time.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "support/descriptors.h"
#include "support/pipe_watcher.h"

namespace platform {
namespace {

using support::PipeWatcher;

class EventLoopTest : public testing::Test {
 protected:
  // Long enough for a handler to be called that must not be.
  void turnSomeTimes() {
    for (int turns = 0; turns < 10; ++turns) {
      loop.post([] {});
      loop.turn();
    }
  }

  EventLoop loop;
};

TEST_F(EventLoopTest, RunsAPostedTaskInALaterTurn) {
  std::string order;
  loop.post([&] {
    order += 'a';
    loop.post([&] { order += 'c'; });
    order += 'b';
  });
  EXPECT_EQ(order, "");
  loop.turn();
  EXPECT_EQ(order, "ab");
  loop.turn();
  EXPECT_EQ(order, "abc");
}

TEST_F(EventLoopTest, CallsTheHandlerOfAReadyDescriptorUntilItHasBeenRead) {
  PipeWatcher idle;
  PipeWatcher ready;
  ready.then = [&] { ready.takeByte(); };
  idle.watch(loop);
  ready.watch(loop);
  turnSomeTimes();
  EXPECT_EQ(ready.calls, 0);
  ready.makeReady();
  ready.makeReady();
  loop.turn();
  turnSomeTimes();
  EXPECT_EQ(ready.calls, 2);
  EXPECT_EQ(idle.calls, 0);
}

TEST_F(EventLoopTest, CallsTheHandlerWhenTheWriterHasClosed) {
  PipeWatcher watcher;
  watcher.watch(loop);
  close(std::exchange(watcher.ends[1], -1));
  loop.turn();
  EXPECT_GT(watcher.calls, 0);
}

TEST_F(EventLoopTest, WatchesForWritingAsWell) {
  PipeWatcher pipe;
  int calls = 0;
  loop.watch(pipe.ends[1], EventLoop::Interest::writable, [&] { ++calls; });
  loop.turn();
  EXPECT_GT(calls, 0);
}

TEST_F(EventLoopTest, TakesAnotherHandlerInThePlaceOfTheOneThatRuns) {
  PipeWatcher pipe;
  std::string order;
  loop.watch(pipe.fd(), EventLoop::Interest::readable, [&] {
    order += 'a';
    loop.watch(pipe.fd(), EventLoop::Interest::both, [&] {
      order += 'b';
      loop.unwatch(pipe.fd());
    });
  });
  pipe.makeReady();
  turnSomeTimes();
  EXPECT_EQ(order, "ab");
}

TEST_F(EventLoopTest, DoesNotCallAHandlerThatWasRemovedInTheSameTurn) {
  std::array<PipeWatcher, 2> watchers;
  for (PipeWatcher& watcher : watchers) {
    watcher.then = [&] {
      for (const PipeWatcher& other : watchers) {
        loop.unwatch(other.fd());
      }
    };
    watcher.makeReady();
    watcher.watch(loop);
  }
  loop.turn();
  turnSomeTimes();
  EXPECT_EQ(watchers[0].calls + watchers[1].calls, 1);
}

TEST_F(EventLoopTest, WatchesAnotherFileUnderANumberThatWasWatchedBefore) {
  PipeWatcher before;
  before.watch(loop);
  loop.turnWithoutWaiting();
  loop.unwatch(before.fd());
  const PipeWatcher after;
  dup2(after.ends[0], before.fd());
  after.makeReady();
  int calls = 0;
  loop.watch(before.fd(), EventLoop::Interest::readable, [&] { ++calls; });
  loop.turn();
  EXPECT_GT(calls, 0);
  EXPECT_EQ(before.calls, 0);
}

TEST_F(EventLoopTest, GivesEachOfManyItsTurnAndTasksTheirs) {
  int calls = 0;
  std::vector<std::unique_ptr<PipeWatcher>> watchers;
  for (int i = 0; i < 200; ++i) {
    auto& watcher = *watchers.emplace_back(std::make_unique<PipeWatcher>());
    watcher.then = [&] { ++calls; };
    watcher.makeReady();
    watcher.watch(loop);
  }
  loop.turn();
  int callsBeforeTask = -1;
  loop.post([&] { callsBeforeTask = calls; });
  loop.turn();
  EXPECT_EQ(callsBeforeTask, 200);
  EXPECT_TRUE(std::all_of(watchers.begin(), watchers.end(),
                          [](const auto& watcher) { return watcher->calls == 2; }));
}

TEST_F(EventLoopTest, RefusesWhatCannotBeWatched) {
  EXPECT_THROW(loop.watch(-1, EventLoop::Interest::readable, [] {}), std::system_error);
  const int file = open("/proc/self/stat", O_RDONLY | O_CLOEXEC);
  const int folder = open("/", O_RDONLY | O_CLOEXEC);
  EXPECT_THROW(loop.watch(folder, EventLoop::Interest::readable, [] {}), std::system_error);
  close(folder);
  close(file);
  loop.unwatch(-1);
}

TEST_F(EventLoopTest, WaitsForATimer) {
  std::string order;
  const std::unique_ptr<Timer> stopped = loop.makeTimer([&] { order += 'x'; });
  const std::unique_ptr<Timer> late = loop.makeTimer([&] { order += 'b'; });
  const std::unique_ptr<Timer> early = loop.makeTimer([&] { order += 'a'; });
  stopped->start(std::chrono::milliseconds(1));
  late->start(std::chrono::milliseconds(1));
  early->start(std::chrono::milliseconds(5));
  // Starting it anew moves it behind the other.
  late->start(std::chrono::milliseconds(50));
  stopped->stop();
  loop.run();
  EXPECT_EQ(order, "ab");
}

TEST_F(EventLoopTest, CallsATimerOnceAndNotAfterItsDestruction) {
  int calls = 0;
  std::unique_ptr<Timer> timer = loop.makeTimer([&] { ++calls; });
  timer->start(std::chrono::milliseconds(0));
  loop.run();
  EXPECT_EQ(calls, 1);
  timer->start(std::chrono::milliseconds(0));
  timer.reset();
  loop.run();
  EXPECT_EQ(calls, 1);
}

TEST_F(EventLoopTest, ReturnsWhenNothingIsLeftToWaitFor) {
  PipeWatcher watcher;
  watcher.then = [&] { loop.unwatch(watcher.fd()); };
  watcher.watch(loop);
  watcher.makeReady();
  loop.run();
  EXPECT_EQ(watcher.calls, 1);
}

TEST_F(EventLoopTest, SaysWhenItsNextTurnIsDue) {
  EXPECT_EQ(loop.timeoutMs(), -1);
  PipeWatcher watcher;
  watcher.watch(loop);
  loop.turnWithoutWaiting();
  EXPECT_EQ(loop.timeoutMs(), -1);
  const std::unique_ptr<Timer> timer = loop.makeTimer([] {});
  timer->start(std::chrono::hours(1));
  EXPECT_GT(loop.timeoutMs(), 3'500'000);
  loop.post([] {});
  EXPECT_EQ(loop.timeoutMs(), 0);
}

// The signal comes again and again, as one before the wait would not interrupt it.
TEST_F(EventLoopTest, GoesOnWaitingAfterASignal) {
  PipeWatcher watcher;
  watcher.then = [&] { watcher.takeByte(); };
  watcher.watch(loop);
  static int signals;
  static int writeEnd;
  signals = 0;
  writeEnd = watcher.ends[1];
  struct sigaction action{};
  action.sa_handler = [](int) {
    if (++signals == 20) {
      [[maybe_unused]] const ssize_t written = write(writeEnd, "x", 1);
    }
  };
  struct sigaction before{};
  sigaction(SIGALRM, &action, &before);
  const itimerval often{.it_interval = {.tv_sec = 0, .tv_usec = 1000},
                        .it_value = {.tv_sec = 0, .tv_usec = 1000}};
  setitimer(ITIMER_REAL, &often, nullptr);
  loop.turn();
  const itimerval never{};
  setitimer(ITIMER_REAL, &never, nullptr);
  sigaction(SIGALRM, &before, nullptr);
  EXPECT_EQ(watcher.calls, 1);
}

TEST(EventLoop, ClosesItsDescriptors) {
  const std::size_t before = support::openDescriptors();
  {
    EventLoop loop;
    PipeWatcher watcher;
    watcher.watch(loop);
    const std::unique_ptr<Timer> timer = loop.makeTimer([] {});
    loop.turnWithoutWaiting();
    loop.unwatch(watcher.fd());
  }
  // libuv keeps a pipe for signals for as long as the process lives.
  EXPECT_LE(support::openDescriptors(), before + 2);
}

using EventLoopDeathTest = EventLoopTest;

TEST_F(EventLoopDeathTest, AnExceptionInATaskIsAFatalError) {
  EXPECT_EXIT(
      {
        loop.post([] { throw std::runtime_error("a reason"); });
        loop.run();
      },
      testing::KilledBySignal(SIGABRT), "the program ends after an error: a reason\n");
}

TEST_F(EventLoopDeathTest, AnExceptionInAHandlerIsAFatalError) {
  EXPECT_EXIT(
      {
        PipeWatcher watcher;
        watcher.then = [] { throw std::runtime_error("a reason"); };
        watcher.makeReady();
        watcher.watch(loop);
        loop.run();
      },
      testing::KilledBySignal(SIGABRT), "the program ends after an error: a reason\n");
}

TEST_F(EventLoopDeathTest, AnExceptionInATimerIsAFatalError) {
  EXPECT_EXIT(
      {
        const auto timer = loop.makeTimer([] { throw std::runtime_error("a reason"); });
        timer->start(std::chrono::milliseconds(0));
        loop.run();
      },
      testing::KilledBySignal(SIGABRT), "the program ends after an error: a reason\n");
}

}  // namespace
}  // namespace platform
