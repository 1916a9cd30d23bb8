// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "app/main_controller.h"

#include <gtest/gtest.h>

#include "platform/event_loop/fatal_error.h"
#include "support/environment.h"
#include "support/event_loop.h"
#include "support/fake_controls.h"

namespace app {
namespace {

TEST(MainController, BeginsWithNothingSet) {
  const MainController controller(support::eventLoop());
  EXPECT_FALSE(controller.isSilent || controller.isConsole || controller.forceSkv ||
               controller.skipSkv || controller.isSkv || controller.isFinishing ||
               controller.isInternet);
  EXPECT_EQ(controller.tailSize, 0);
  EXPECT_EQ(controller.maxPostSize, 0);
  EXPECT_EQ(controller.domain, std::nullopt);
  EXPECT_EQ(controller.outputFile, std::nullopt);
  EXPECT_EQ(controller.txtHalvikAccount, std::nullopt);
  EXPECT_EQ(controller.txtTicketNo, std::nullopt);
  EXPECT_EQ(controller.http, nullptr);
}

TEST(MainController, IsReadyForARunWithoutAWindow) {
  MainController controller(support::eventLoop());
  controller.awakeFromNib();
  EXPECT_EQ(controller.processes.size(), 0U);
  EXPECT_TRUE(controller.container.empty());
  EXPECT_EQ(controller.tailSize, 15000);
  EXPECT_EQ(controller.maxPostSize, 1000000);
  EXPECT_TRUE(controller.applicationShouldTerminateAfterLastWindowClosed());
}

TEST(MainController, HidesTheResultsAndTitlesTheWindow) {
  MainController controller(support::eventLoop());
  const support::FakeWindow window(controller);
  controller.awakeFromNib();
  EXPECT_EQ(window.calls, (support::Calls{"scroll hide", "caption hide", "copy hide", "open hide",
                                          "window title Halvik Diagnostic v1.0.0"}));
}

TEST(MainController, BeginsWithNoRuns) {
  MainController controller(support::eventLoop());
  diagnostics::ProcessList list;
  list.append(std::make_shared<diagnostics::Process>(support::eventLoop()));
  controller.processes = list;
  controller.container.push_back(list);
  controller.awakeFromNib();
  EXPECT_EQ(controller.processes.size(), 0U);
  EXPECT_TRUE(controller.container.empty());
}

TEST(MainController, EndsTheProgramWithItsLastWindow) {
  MainController controller(support::eventLoop());
  EXPECT_TRUE(controller.applicationShouldTerminateAfterLastWindowClosed());
}

TEST(MainController, TakesItsOptionsInOrder) {
  for (int set = 0; set < 5; ++set) {
    MainController controller(support::eventLoop());
    controller.isSkv = true;
    controller.isFinishing = true;
    controller.initArgsWithSilent(set == 0, set == 1, set == 2, set == 3, set == 4);
    EXPECT_EQ(controller.isSilent, set == 0);
    EXPECT_EQ(controller.isConsole, set == 1);
    EXPECT_EQ(controller.forceSkv, set == 2);
    EXPECT_EQ(controller.skipSkv, set == 3);
    EXPECT_EQ(controller.isInternet, set == 4);
    EXPECT_TRUE(controller.isSkv && controller.isFinishing);
  }
}

TEST(MainController, ExpandsTheTildeOfTheOutputFile) {
  const support::ScopedVariable home("HOME", "/home/somebody");
  MainController controller(support::eventLoop());
  controller.setOutputFile("~/report.txt");
  EXPECT_EQ(controller.outputFile, "/home/somebody/report.txt");
  controller.setOutputFile("");
  EXPECT_EQ(controller.outputFile, "");
}

TEST(MainController, KeepsTheDomainAsGiven) {
  MainController controller(support::eventLoop());
  controller.setDomain("http://a b.example/\xff");
  EXPECT_EQ(controller.domain, "http://a b.example/\xff");
}

// Only where the system does not end them itself do they otherwise outlive the program.
TEST(MainController, AsksItsCommandsToEndAfterAnError) {
  MainController controller(support::eventLoop());
  controller.isFinishing = true;
  controller.startTest("/bin/sh", {"-c", "exec tail -f /dev/null"});
  controller.startTest("/bin/sh", {"-c", "exec tail -f /dev/null"});
  platform::onFatalError().endCommands();
  support::turnUntil([&] { return controller.didAllTestsFinished(); });
}

TEST(MainController, LeavesNoMeasuresBehind) {
  {
    const MainController controller(support::eventLoop());
    EXPECT_TRUE(platform::onFatalError().saveReport);
    EXPECT_TRUE(platform::onFatalError().endCommands);
  }
  EXPECT_FALSE(platform::onFatalError().saveReport);
  EXPECT_FALSE(platform::onFatalError().endCommands);
}

}  // namespace
}  // namespace app
