// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The entry of both test programs: one without a display, one with windows on an off-screen
// display.

#include <gtest/gtest.h>

#include <cstdlib>

#include "platform/process/process_setup.h"
#include "support/event_loop.h"
#include "text/log.h"

#ifdef HALVIK_TESTS_WITH_WINDOWS
#include <QCoreApplication>

#include "platform/desktop/qt_application.h"
#endif

namespace {

platform::EventLoop* theLoop = nullptr;

}  // namespace

platform::EventLoop& support::eventLoop() {
  return *theLoop;
}

#ifdef HALVIK_TESTS_WITH_WINDOWS
namespace {

platform::QtApplication* theApplication = nullptr;

}  // namespace

platform::Desktop& support::desktop() {
  return theApplication->desktop();
}

void support::turn() {
  QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}
#else
void support::turn() {
  theLoop->turn();
}
#endif

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  // A death test is a new process: nothing is shared with the threads of this one.
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  setenv("QT_QPA_PLATFORM", "offscreen", 1);
  text::setProcessName(argv[0]);
  platform::setUpProcess();
  platform::EventLoop loop;
  theLoop = &loop;
#ifdef HALVIK_TESTS_WITH_WINDOWS
  platform::QtApplication application(loop, argc, argv);
  theApplication = &application;
#endif
  return RUN_ALL_TESTS();
}
