// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/event_loop/fatal_error.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <cstdlib>
#include <new>
#include <stdexcept>
#include <thread>

#include "text/log.h"

namespace platform {
namespace {

[[noreturn]] void fail() {
  throw std::runtime_error("a reason");
}

TEST(FatalError, DoesNotComeOfWorkThatDoesNotThrow) {
  int calls = 0;
  guarded([&] { ++calls; });
  EXPECT_EQ(calls, 1);
}

TEST(FatalErrorDeathTest, AnUncaughtExceptionIsLoggedAndAborts) {
  EXPECT_EXIT(guarded(fail), testing::KilledBySignal(SIGABRT), "\\] .*: a reason\n");
  EXPECT_EXIT(guarded([] { throw 1; }), testing::KilledBySignal(SIGABRT),
              "without a description\n");
}

TEST(FatalErrorDeathTest, TheReportIsSavedBeforeTheEnd) {
  EXPECT_EXIT(
      {
        onFatalError().saveReport = [] { text::log("saved"); };
        guarded(fail);
      },
      testing::KilledBySignal(SIGABRT), "a reason\n.*saved\n");
}

TEST(FatalErrorDeathTest, ASecondErrorWhileSavingEndsAsWell) {
  EXPECT_EXIT(
      {
        onFatalError().saveReport = [] { throw std::runtime_error("another"); };
        guarded(fail);
      },
      testing::KilledBySignal(SIGABRT), "a reason\n.*another\n");
}

TEST(FatalErrorDeathTest, AHookThatThrowsDoesNotKeepTheNextFromBeingCalled) {
  EXPECT_EXIT(
      {
        onFatalError().saveReport = [] { throw std::runtime_error("another"); };
        onFatalError().endCommands = [] { text::log("ended"); };
        onFatalError().showError = [](const char* reason) {
          text::log(std::string("shown ") + reason);
        };
        guarded(fail);
      },
      testing::ExitedWithCode(EXIT_FAILURE), "a reason\n.*another\n.*ended\n.*shown another\n");
}

TEST(FatalErrorDeathTest, AnErrorInAThreadOfALibrarySavesTheReportAsWell) {
  EXPECT_EXIT(
      {
        onFatalError().saveReport = [] { text::log("saved"); };
        onFatalError().showError = [](const char* /*reason*/) { text::log("shown"); };
        std::thread(fail).join();
      },
      testing::KilledBySignal(SIGABRT), "\\] .*: a reason\n[^\n]*saved\n$");
  EXPECT_EXIT(std::terminate(), testing::KilledBySignal(SIGABRT), "was terminated\n");
}

#ifndef HALVIK_SANITIZE
[[noreturn]] void useUpMemory() {
  const rlimit nothing{};
  setrlimit(RLIMIT_AS, &nothing);
  for (std::size_t size = 1 << 20; size > 0; size /= 2) {
    while (new (std::nothrow) char[size] != nullptr) {
    }
  }
  throw std::bad_alloc();
}

TEST(FatalErrorDeathTest, IsLoggedAndSavesTheReportWithoutMemory) {
  EXPECT_EXIT(
      {
        onFatalError().saveReport = [] { text::log(std::string(1000, 's')); };
        guarded(useUpMemory);
      },
      testing::KilledBySignal(SIGABRT), "\\] .*: std::bad_alloc\n.*sss\n");
}
#endif

TEST(FatalErrorDeathTest, TheCommandsAreEndedAfterTheReportIsSaved) {
  EXPECT_EXIT(
      {
        onFatalError().saveReport = [] { text::log("saved"); };
        onFatalError().endCommands = [] { text::log("ended"); };
        guarded(fail);
      },
      testing::KilledBySignal(SIGABRT), "saved\n.*ended\n");
}

TEST(FatalErrorDeathTest, NothingElseRunsWhileTheErrorIsShown) {
  EXPECT_EXIT(
      {
        onFatalError().showError = [](const char* /*reason*/) { guarded([] { std::_Exit(2); }); };
        guarded(fail);
      },
      testing::ExitedWithCode(EXIT_FAILURE), "a reason\n");
}

TEST(FatalErrorDeathTest, TheErrorIsShownAndTheStatusIsOne) {
  EXPECT_EXIT(
      {
        onFatalError().saveReport = [] { text::log("saved"); };
        onFatalError().showError = [](const char* reason) {
          text::log(std::string("shown ") + reason);
        };
        guarded(fail);
      },
      testing::ExitedWithCode(1), "saved\n.*shown a reason\n");
}

}  // namespace
}  // namespace platform
