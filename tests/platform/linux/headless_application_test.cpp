// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/headless_application.h"

#include <gtest/gtest.h>
#include <sys/time.h>

#include <array>
#include <csignal>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/pipe_watcher.h"

namespace platform {
namespace {

class HeadlessApplicationTest : public testing::Test {
 protected:
  void turnSomeTimes() {
    for (int turns = 0; turns < 10; ++turns) {
      application->post([] {});
      application->turn();
    }
  }

  int argc = 0;
  std::unique_ptr<Application> application = makeHeadlessApplication(argc, nullptr);
};

TEST_F(HeadlessApplicationTest, RunsAPostedTaskInALaterTurn) {
  std::string order;
  application->post([&] {
    order += 'a';
    application->post([&] { order += 'c'; });
    order += 'b';
  });
  EXPECT_EQ(order, "");
  application->turn();
  EXPECT_EQ(order, "ab");
  application->turn();
  EXPECT_EQ(order, "abc");
}

TEST_F(HeadlessApplicationTest, WaitsForADescriptor) {
  support::PipeWatcher idle;
  support::PipeWatcher ready;
  ready.then = [&] { ready.takeByte(); };
  application->descriptors().watch(idle.fd(), idle);
  application->descriptors().watch(ready.fd(), ready);
  ready.makeReady();
  application->turn();
  turnSomeTimes();
  EXPECT_EQ(ready.calls, 1);
  EXPECT_EQ(idle.calls, 0);
}

TEST_F(HeadlessApplicationTest, DoesNotCallWhoHasLeftInTheSameTurn) {
  std::array<support::PipeWatcher, 2> watchers;
  for (support::PipeWatcher& watcher : watchers) {
    watcher.then = [&] {
      for (const support::PipeWatcher& other : watchers) {
        application->descriptors().unwatch(other.fd(), other);
      }
    };
    watcher.makeReady();
    application->descriptors().watch(watcher.fd(), watcher);
  }
  application->turn();
  turnSomeTimes();
  EXPECT_EQ(watchers[0].calls + watchers[1].calls, 1);
}

TEST_F(HeadlessApplicationTest, GivesEachOfManyItsTurnAndTasksTheirs) {
  int calls = 0;
  std::vector<support::PipeWatcher> watchers(200);
  for (support::PipeWatcher& watcher : watchers) {
    watcher.then = [&] {
      ++calls;
      if (watcher.calls == 3) {
        application->descriptors().unwatch(watcher.fd(), watcher);
      }
    };
    watcher.makeReady();
    application->descriptors().watch(watcher.fd(), watcher);
  }
  application->turn();
  EXPECT_EQ(calls, 32);
  int callsBeforeTask = -1;
  application->post([&] { callsBeforeTask = calls; });
  while (calls < 600) {
    application->turn();
  }
  EXPECT_EQ(callsBeforeTask, 32);
}

// Which comes again and again, as one before the wait would not end it.
TEST_F(HeadlessApplicationTest, WaitsUntilASignal) {
  static volatile std::sig_atomic_t hasCome;
  hasCome = 0;
  struct sigaction action {};
  action.sa_handler = [](int) { hasCome = 1; };
  struct sigaction before {};
  sigaction(SIGALRM, &action, &before);
  const itimerval often{.it_interval = {.tv_sec = 0, .tv_usec = 1000},
                        .it_value = {.tv_sec = 0, .tv_usec = 1000}};
  setitimer(ITIMER_REAL, &often, nullptr);
  application->turn();
  const itimerval never{};
  setitimer(ITIMER_REAL, &never, nullptr);
  sigaction(SIGALRM, &before, nullptr);
  EXPECT_EQ(hasCome, 1);
}

TEST_F(HeadlessApplicationTest, SendsNothing) {
  struct Events final : HttpConnectionDelegate {
    void connectionDidReceiveResponse(const HttpResponse& /*response*/) override {}
    void connectionDidReceiveData(std::string_view /*data*/) override {}
    void connectionDidFinishLoading() override {}
    void connectionDidFailWithError() override {}
    void connectionDidRefuseReply() override {}
  } events;
  EXPECT_THROW(application->send({.url = "http://127.0.0.1", .headers = {}, .body = "x"}, events,
                                 std::chrono::seconds(60)),
               std::logic_error);
}

using HeadlessApplicationDeathTest = HeadlessApplicationTest;

TEST_F(HeadlessApplicationDeathTest, ATaskThatThrowsEndsTheProcess) {
  EXPECT_EXIT(
      {
        application->post([] { throw std::runtime_error("a reason"); });
        application->run();
      },
      testing::KilledBySignal(SIGABRT), "the program ends after an error: a reason\n");
}

TEST_F(HeadlessApplicationDeathTest, AWatcherThatThrowsEndsTheProcess) {
  EXPECT_EXIT(
      {
        support::PipeWatcher watcher;
        watcher.then = [] { throw std::runtime_error("a reason"); };
        watcher.makeReady();
        application->descriptors().watch(watcher.fd(), watcher);
        application->run();
      },
      testing::KilledBySignal(SIGABRT), "the program ends after an error: a reason\n");
}

}  // namespace
}  // namespace platform
