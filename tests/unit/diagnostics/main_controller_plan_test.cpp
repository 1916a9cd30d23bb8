// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "diagnostics/plan.h"
#include "support/recorded_plan.h"

namespace app {
namespace {

using support::RecordingController;

using support::PlannedTest;

std::vector<PlannedTest> expected(const diagnostics::TestDomain& domain) {
  return support::generalTests(diagnostics::builtInEndpoints(), domain);
}

std::vector<PlannedTest> expectedWithSkivra(const diagnostics::TestDomain& domain) {
  const diagnostics::Endpoints endpoints = diagnostics::builtInEndpoints();
  std::vector<PlannedTest> tests = expected(domain);
  for (const auto& more :
       {support::skivraTests(endpoints, domain), support::systemLogAndBlockingTests(endpoints)}) {
    tests.insert(tests.end(), more.begin(), more.end());
  }
  return tests;
}

// No log is read on a machine without the Skivra, which every machine that builds the program
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

TEST_F(TestPlanRun, StartsTheGeneralTests) {
  controller.startTests();
  EXPECT_EQ(controller.planned, expected(std::nullopt));
  EXPECT_EQ(controller.processes.size(), controller.planned.size());
  EXPECT_FALSE(controller.isSkv);
}

TEST_F(TestPlanRun, AddsThoseOfADomain) {
  controller.setDomain("example.com");
  controller.startTests();
  EXPECT_EQ(controller.planned, expected("example.com"));
}

TEST_F(TestPlanRun, AddsThoseOfTheSkivraWithoutADomain) {
  controller.forceSkv = true;
  controller.setDomain("");
  controller.startTests();
  EXPECT_EQ(controller.planned, expectedWithSkivra(std::nullopt));
}

TEST_F(TestPlanRun, LeavesOneOfThemOutForAWordThatIsNoDomain) {
  controller.forceSkv = true;
  controller.setDomain("word");
  controller.startTests();
  EXPECT_EQ(controller.planned, expectedWithSkivra("word"));
}

TEST_F(TestPlanRun, AddsThoseOfTheSkivraAndADomain) {
  controller.forceSkv = true;
  controller.setDomain("example.com");
  controller.startTests();
  EXPECT_EQ(controller.planned, expectedWithSkivra("example.com"));
}

TEST_F(TestPlanRun, SkippingTheSkivraWins) {
  controller.forceSkv = true;
  controller.skipSkv = true;
  controller.startTests();
  EXPECT_EQ(controller.planned, expected(std::nullopt));
}

TEST_F(TestPlanRun, ASecondRunStartsAfreshAndKeepsTheFirst) {
  controller.isFinishing = true;
  controller.startTests();
  EXPECT_FALSE(controller.isFinishing);
  const auto first = *controller.processes.begin();
  controller.startTests();
  EXPECT_EQ(controller.processes.size(), support::countOfGeneralTests());
  ASSERT_EQ(controller.container.size(), 2U);
  EXPECT_EQ(controller.container[0].size(), 0U);
  EXPECT_EQ(controller.container[1].size(), support::countOfGeneralTests());
  EXPECT_EQ(*controller.container[1].begin(), first);
}

TEST_F(TestPlanRun, NoEndIsCountedWhileTheRunIsLaunched) {
  controller.startTests();
  EXPECT_EQ(controller.finishedTasksCount(), 0U);
}

}  // namespace
}  // namespace app
