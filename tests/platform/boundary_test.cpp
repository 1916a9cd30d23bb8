// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/boundary.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <stdexcept>

#include "platform/log.h"

namespace platform {
namespace {

[[noreturn]] void fail() {
  throw std::runtime_error("a reason");
}

TEST(Boundary, LetsWorkThroughThatDoesNotThrow) {
  int calls = 0;
  enter([&] { ++calls; });
  EXPECT_EQ(calls, 1);
}

TEST(BoundaryDeathTest, AnUncaughtErrorIsLoggedAndAborts) {
  EXPECT_EXIT(enter(fail), testing::KilledBySignal(SIGABRT), "\\] .*: a reason\n");
  EXPECT_EXIT(enter([] { throw 1; }), testing::KilledBySignal(SIGABRT), "without a description\n");
}

TEST(BoundaryDeathTest, TheReportIsSavedBeforeTheEnd) {
  EXPECT_EXIT(
      {
        lastMeasures().saveReport = [] { log("saved"); };
        enter(fail);
      },
      testing::KilledBySignal(SIGABRT), "a reason\n.*saved\n");
}

TEST(BoundaryDeathTest, ASecondErrorWhileSavingEndsAsWell) {
  EXPECT_EXIT(
      {
        lastMeasures().saveReport = [] { throw std::runtime_error("another"); };
        enter(fail);
      },
      testing::KilledBySignal(SIGABRT), "a reason\n.*another\n");
}

TEST(BoundaryDeathTest, CommandsAreAskedToEndWhenTheReportIsSafe) {
  EXPECT_EXIT(
      {
        lastMeasures().saveReport = [] { log("saved"); };
        lastMeasures().endCommands = [] { log("ended"); };
        enter(fail);
      },
      testing::KilledBySignal(SIGABRT), "saved\n.*ended\n");
}

TEST(BoundaryDeathTest, NothingGoesOnWhileAPersonIsTold) {
  EXPECT_EXIT(
      {
        lastMeasures().tellUser = [](const char* /*reason*/) { enter([] { std::_Exit(2); }); };
        enter(fail);
      },
      testing::ExitedWithCode(EXIT_FAILURE), "a reason\n");
}

TEST(BoundaryDeathTest, APersonIsToldAndTheStatusSaysThatItFailed) {
  EXPECT_EXIT(
      {
        lastMeasures().saveReport = [] { log("saved"); };
        lastMeasures().tellUser = [](const char* reason) { log(std::string("told ") + reason); };
        enter(fail);
      },
      testing::ExitedWithCode(1), "saved\n.*told a reason\n");
}

}  // namespace
}  // namespace platform
