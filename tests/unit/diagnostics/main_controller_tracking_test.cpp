// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/process_controller.h"

// What ends the process, which every delivery without a window does, is tested with the whole
// program.

namespace app {
namespace {

TEST(RunTracking, AnEmptyRunCountsAsFinished) {
  const MainController controller(support::eventLoop());
  EXPECT_EQ(controller.finishedTasksCount(), 0U);
  EXPECT_TRUE(controller.didAllTestsFinished());
}

TEST(RunTracking, CountsTheCommandsOfTheCurrentRunOnly) {
  MainController controller(support::eventLoop());
  controller.isFinishing = true;
  controller.startTest("/bin/true", {});
  controller.startTest("/bin/sh", {"-c", "exec tail -f /dev/null"});
  EXPECT_FALSE(controller.didAllTestsFinished());
  support::turnUntil([&] { return controller.finishedTasksCount() == 1; });
  EXPECT_FALSE(controller.didAllTestsFinished());
  controller.container.push_back(controller.processes);
  controller.processes = diagnostics::ProcessList();
  EXPECT_EQ(controller.finishedTasksCount(), 0U);
  EXPECT_TRUE(controller.didAllTestsFinished());
}

TEST(RunTracking, ACompletionThatHasBegunIsNotRepeated) {
  MainController controller(support::eventLoop());
  controller.isFinishing = true;
  controller.processTerminatedNotification();
  EXPECT_TRUE(controller.results.empty());
}

TEST(RunTracking, CompletionWaitsForTheLastCommandAndRunsOnce) {
  // No endpoint: the upload fails at once, within the completion, and counts as one.
  diagnostics::Endpoints nowhere = diagnostics::builtInEndpoints();
  nowhere.submitUrl = "";
  class Counting final : public MainController {
   public:
    using MainController::MainController;
    void onHttpError(const report::Http& /*client*/) override { ++completions; }
    int completions = 0;
  };
  Counting controller(support::eventLoop(), nowhere);
  controller.awakeFromNib();
  for (int i = 0; i < 20; ++i) {
    controller.startTest("/bin/sh", {"-c", "echo " + std::to_string(i)});
  }
  support::turnUntil([&] {
    if (!controller.didAllTestsFinished()) {
      EXPECT_EQ(controller.completions, 0);
    }
    return controller.completions > 0;
  });
  controller.processTerminatedNotification();
  EXPECT_EQ(controller.completions, 1);
  EXPECT_TRUE(controller.isFinishing);
  const std::string results = text::join(controller.results);
  std::size_t position = 0;
  for (int i = 0; i < 20; ++i) {
    position = results.find("stdout:\n" + std::to_string(i) + "\n\n", position);
    ASSERT_NE(position, std::string::npos) << i;
  }
}

TEST(RunTracking, ADisplayThatIsDueAfterTheRunIsGoneIsLeftOut) {
  bool isLater = false;
  {
    MainController controller(support::eventLoop());
    controller.updateProgress();
  }
  support::eventLoop().post([&] { isLater = true; });
  support::turnUntil([&] { return isLater; });
}

}  // namespace
}  // namespace app
