// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include "platform/process_setup.h"
#include "support/application.h"

namespace {

platform::Application* theApplication = nullptr;

}  // namespace

platform::Application& support::application() {
  return *theApplication;
}

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  // A death test is a new process: nothing is shared with the threads of this one.
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  platform::setUpProcess();
  platform::Application application(platform::Application::Mode::headless, argc, argv);
  theApplication = &application;
  return RUN_ALL_TESTS();
}
