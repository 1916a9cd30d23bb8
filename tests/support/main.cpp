// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The entry of both test programs: one without a display, one with windows on an off-screen
// display.

#include <gtest/gtest.h>

#include <cstdlib>

#include "platform/log.h"
#include "platform/process_setup.h"
#include "platform/toolkit_application.h"
#include "platform/windowed_application.h"
#include "support/application.h"

namespace {

#ifdef HALVIK_TESTS_WITH_WINDOWS
using TestedApplication = platform::WindowedApplication;
#else
using TestedApplication = platform::ToolkitApplication;
#endif

TestedApplication* theApplication = nullptr;

}  // namespace

platform::Application& support::application() {
  return *theApplication;
}

#ifdef HALVIK_TESTS_WITH_WINDOWS
platform::Desktop& support::desktop() {
  return theApplication->desktop();
}
#endif

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  // A death test is a new process: nothing is shared with the threads of this one.
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  setenv("QT_QPA_PLATFORM", "offscreen", 1);
  platform::setProcessName(argv[0]);
  platform::setUpProcess();
  TestedApplication application(argc, argv);
  theApplication = &application;
  return RUN_ALL_TESTS();
}
