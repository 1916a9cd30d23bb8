// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// What a run shows of its progress, and when.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/environment.h"
#include "support/fake_controls.h"
#include "support/recorded_plan.h"
#include "support/temporary_folder.h"

namespace app {
namespace {

using support::Calls;

// An endpoint at which every upload fails at once.
diagnostics::Endpoints nowhere() {
  diagnostics::Endpoints endpoints = diagnostics::builtInEndpoints();
  endpoints.submitUrl = "";
  return endpoints;
}

Calls operator+(Calls first, const Calls& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

const Calls disabled{"start disable", "account disable", "ticket disable", "domain disable"};
const Calls shown{"scroll hide",    "caption hide", "status show", "progress show",
                  "progress start", "copy hide",    "open hide"};

Calls range(const std::string& count) {
  return {"progress range 0 to " + count, "progress value 0"};
}

Calls refresh(const std::string& done, const std::string& total) {
  return {"status text Please wait. Finished " + done + " out of " + total + " tests.",
          "progress value " + done};
}

// Turns the loop until everything that is posted by now has been done.
void doWhatIsPosted() {
  bool isDone = false;
  support::eventLoop().post([&] { isDone = true; });
  support::turnUntil([&] { return isDone; });
}

class ProgressDisplay : public testing::Test {
 protected:
  void SetUp() override {
    controller.awakeFromNib();
    controller.skipSkv = true;
    window.calls.clear();
  }

  support::TemporaryFolder home;
  support::ScopedVariable variable{"HOME", home.path().c_str()};
  support::ScopedVariable config{"XDG_CONFIG_HOME", nullptr};
  support::RecordingController controller{nowhere()};
  const std::string total = std::to_string(support::countOfGeneralTests());
  support::FakeWindow window{controller};
};

TEST_F(ProgressDisplay, BeginsWhenAllCommandsAreLaunched) {
  controller.startTests();
  EXPECT_EQ(window.calls, disabled + range(total) + shown);
}

TEST_F(ProgressDisplay, OfTheSecondRunEndsWithItsOwnCommands) {
  controller.startTests();
  window.calls.clear();
  window.domain.text = "example.com";
  controller.startTests();
  const std::size_t withDomain = support::countOfGeneralTests("example.com");
  EXPECT_EQ(window.calls, disabled + range(std::to_string(withDomain)) + shown);
}

TEST_F(ProgressDisplay, IsNotShownByASilentRun) {
  controller.isSilent = true;
  controller.startTests();
  EXPECT_EQ(window.calls, disabled + range(total));
}

TEST_F(ProgressDisplay, IsRefreshedInALaterTurnOfTheLoop) {
  controller.updateProgress();
  EXPECT_EQ(window.calls, Calls());
  // What it shows is counted when it is shown.
  controller.processes.append(support::makeProcess());
  doWhatIsPosted();
  EXPECT_EQ(window.calls, refresh("0", "1"));
}

TEST_F(ProgressDisplay, IsRefreshedOnceWhenARunIsLaunched) {
  controller.showProgress();
  doWhatIsPosted();
  EXPECT_EQ(window.calls, shown + refresh("0", "0"));
}

TEST_F(ProgressDisplay, IsRefreshedAtEveryEndAndForTheLastTimeBehindTheCompletion) {
  controller.startTests();
  support::turnUntil([&] { return controller.isFinishing; });
  const auto completed = static_cast<std::ptrdiff_t>(window.calls.size());
  doWhatIsPosted();
  const Calls& calls = window.calls;
  EXPECT_EQ(calls[static_cast<std::size_t>(completed) - 1], "scroll show");
  const Calls last = refresh(total, total);
  EXPECT_EQ(Calls(calls.end() - 2, calls.end()), last);
  EXPECT_NE(std::find(calls.begin() + completed, calls.end(), last[1]), calls.end());
  std::vector<int> values;
  for (const std::string& call : calls) {
    if (call.starts_with("progress value ")) {
      values.push_back(std::stoi(call.substr(15)));
    }
  }
  // The one of the launch, one behind it, and one for each end.
  EXPECT_EQ(values.size(), support::countOfGeneralTests() + 2);
  EXPECT_TRUE(std::is_sorted(values.begin(), values.end()));
}

}  // namespace
}  // namespace app
