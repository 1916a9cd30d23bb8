// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "diagnostics/plan.h"
#include "support/process_controller.h"

namespace app {
namespace {

using support::RecordingController;

// The counts hold on a machine without the Skivra, which every machine that builds the program
// should be.
class TestPlanRun : public testing::Test {
 protected:
  void SetUp() override {
    if (std::filesystem::exists(diagnostics::skivraFolder)) {
      GTEST_SKIP() << "the Skivra is installed on this machine";
    }
    controller.awakeFromNib();
    controller.isSilent = true;
  }

  RecordingController controller;
};

TEST_F(TestPlanRun, TheGeneralTestsAre52) {
  controller.startTests();
  EXPECT_EQ(controller.planned.size(), 52U);
  EXPECT_EQ(controller.processes.size(), 52U);
  EXPECT_FALSE(controller.isSkv);
}

TEST_F(TestPlanRun, ADomainAddsFive) {
  controller.setDomain("example.com");
  controller.startTests();
  EXPECT_EQ(controller.planned.size(), 57U);
}

TEST_F(TestPlanRun, TheSkivraAddsFifteenWithoutADomain) {
  controller.forceSkv = true;
  controller.setDomain("");
  controller.startTests();
  ASSERT_EQ(controller.planned.size(), 67U);
  EXPECT_EQ(controller.planned[52], (support::PlannedTest{"/usr/bin/dig", {}, std::nullopt}));
}

TEST_F(TestPlanRun, AWordThatIsNoDomainLeavesOneOfThemOut) {
  controller.forceSkv = true;
  controller.setDomain("word");
  controller.startTests();
  EXPECT_EQ(controller.planned.size(), 66U);
}

TEST_F(TestPlanRun, TheSkivraAndADomainMake72) {
  controller.forceSkv = true;
  controller.setDomain("example.com");
  controller.startTests();
  EXPECT_EQ(controller.planned.size(), 72U);
}

TEST_F(TestPlanRun, SkippingTheSkivraWins) {
  controller.forceSkv = true;
  controller.skipSkv = true;
  controller.startTests();
  EXPECT_EQ(controller.planned.size(), 52U);
}

TEST_F(TestPlanRun, ASecondRunStartsAfreshAndKeepsTheFirst) {
  controller.isFinishing = true;
  controller.startTests();
  EXPECT_FALSE(controller.isFinishing);
  const auto first = *controller.processes.begin();
  controller.startTests();
  EXPECT_EQ(controller.processes.size(), 52U);
  ASSERT_EQ(controller.container.size(), 2U);
  EXPECT_EQ(controller.container[0].size(), 0U);
  EXPECT_EQ(controller.container[1].size(), 52U);
  EXPECT_EQ(*controller.container[1].begin(), first);
}

TEST_F(TestPlanRun, NoEndIsCountedWhileTheRunIsLaunched) {
  controller.startTests();
  EXPECT_EQ(controller.finishedTasksCount(), 0U);
}

}  // namespace
}  // namespace app
