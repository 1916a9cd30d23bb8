// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// One run after another, in one process.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>

#include "diagnostics/plan.h"
#include "platform/files/files.h"
#include "support/fake_controls.h"
#include "support/recorded_plan.h"
#include "support/temporary_folder.h"

namespace app {
namespace {

// Runs whose first command waits until it is let go; the others end at once. An upload fails within
// the completion, and counts as one.
class Successive final : public MainController {
 public:
  Successive() : MainController(support::eventLoop(), nowhere()) {
    awakeFromNib();
    skipSkv = true;
  }

  using MainController::startTest;
  void startTest(const std::string& /*launchPath*/, const std::vector<std::string>& /*args*/,
                 const Text& comment) override {
    if (processes.size() > 0) {
      MainController::startTest("/bin/true", {}, comment);
      return;
    }
    fifos.push_back(folder.path("fifo" + std::to_string(fifos.size())));
    ASSERT_EQ(mkfifo(fifos.back().c_str(), 0600), 0);
    MainController::startTest("/bin/sh", {"-c", "read line <" + fifos.back() + "; echo $line"},
                              comment);
  }
  void onHttpError(const report::Http& /*client*/) override { ++completions; }

  // Starts a run and waits until only its first command is left, which it returns.
  std::shared_ptr<diagnostics::Process> startAllButOne() {
    startTests();
    support::turnUntil([&] { return finishedTasksCount() + 1 == processes.size(); });
    return *processes.begin();
  }
  void letGo(std::size_t run, const std::shared_ptr<diagnostics::Process>& waiting) const {
    std::ofstream(fifos[run]) << "run" << run << '\n';
    support::turnUntil([&] { return waiting->isFinished(); });
  }

  int completions = 0;

 private:
  static diagnostics::Endpoints nowhere() {
    diagnostics::Endpoints endpoints = diagnostics::builtInEndpoints();
    endpoints.submitUrl = "";
    return endpoints;
  }

  support::TemporaryFolder folder;
  std::vector<std::string> fifos;
};

void doWhatIsPosted() {
  bool isDone = false;
  support::eventLoop().post([&] { isDone = true; });
  support::turnUntil([&] { return isDone; });
}

TEST(RunSuccession, ACommandOfAnEarlierRunRefreshesTheProgressOfTheNewerOneAndNoMore) {
  Successive controller;
  support::FakeWindow window(controller);
  const auto earlier = controller.startAllButOne();
  const auto newer = controller.startAllButOne();
  doWhatIsPosted();
  window.calls.clear();
  controller.letGo(0, earlier);
  doWhatIsPosted();
  const std::size_t total = controller.processes.size();
  const std::string done = std::to_string(total - 1);
  EXPECT_EQ(window.calls, (support::Calls{"status text Please wait. Finished " + done + " out of " +
                                              std::to_string(total) + " tests.",
                                          "progress value " + done}));
  EXPECT_FALSE(controller.isFinishing);
  EXPECT_EQ(controller.completions, 0);
  controller.letGo(1, newer);
  EXPECT_EQ(controller.completions, 1);
  const std::string report = text::join(controller.results);
  EXPECT_EQ(report.find("stdout:\nrun0"), std::string::npos);
  EXPECT_NE(report.find("stdout:\nrun1"), std::string::npos);
}

TEST(RunSuccession, ACommandOfAnEarlierRunCompletesNoRunAgain) {
  Successive controller;
  const auto earlier = controller.startAllButOne();
  const auto newer = controller.startAllButOne();
  controller.letGo(1, newer);
  EXPECT_EQ(controller.completions, 1);
  controller.letGo(0, earlier);
  EXPECT_EQ(controller.completions, 1);
}

TEST(RunSuccession, EachRunCompletesOnce) {
  Successive controller;
  for (int run = 0; run < 3; ++run) {
    const auto waiting = controller.startAllButOne();
    EXPECT_EQ(controller.completions, run);
    controller.letGo(static_cast<std::size_t>(run), waiting);
    EXPECT_EQ(controller.completions, run + 1);
  }
}

// That a folder which appears between two runs is found is tested with the whole program.
TEST(RunSuccession, TheSkivraIsLookedForAnew) {
  if (platform::pathExists(diagnostics::skivraFolder)) {
    GTEST_SKIP() << "the Skivra is installed on this machine";
  }
  support::RecordingController controller;
  controller.awakeFromNib();
  controller.isSilent = true;
  controller.isSkv = true;
  controller.startTests();
  EXPECT_FALSE(controller.isSkv);
  EXPECT_EQ(controller.planned.size(), support::countOfGeneralTests());
}

}  // namespace
}  // namespace app
