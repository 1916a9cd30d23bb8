// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// When the saved report is opened in the desktop's editor.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "report/report.h"
#include "support/environment.h"
#include "support/fake_controls.h"
#include "support/process_controller.h"
#include "support/temporary_folder.h"

namespace app {
namespace {

using support::Calls;

class Editor : public testing::Test {
 protected:
  // An upload with nowhere to go, in a run with a window: what it writes on standard error.
  std::string failToSubmit() {
    controller.results.clear();
    report::addBlock(controller.results, {"cmd", "out\n", std::nullopt});
    testing::internal::CaptureStderr();
    controller.submitResults();
    return testing::internal::GetCapturedStderr();
  }

  static diagnostics::Endpoints nowhere() {
    diagnostics::Endpoints endpoints = diagnostics::builtInEndpoints();
    endpoints.submitUrl = "";
    return endpoints;
  }

  support::TemporaryFolder home;
  support::TemporaryFolder temporary;
  support::ScopedVariable homeVariable{"HOME", home.path().c_str()};
  support::ScopedVariable configVariable{"XDG_CONFIG_HOME", home.path("config").c_str()};
  support::ScopedVariable temporaryVariable{"TMPDIR", temporary.path().c_str()};
  MainController controller{support::eventLoop(), nowhere()};
  support::FakeWindow window{controller};
  const std::string saved = home.path("Desktop/diagnostic_results.txt");
};

TEST_F(Editor, OpensTheFileThatWasWritten) {
  const std::string path = home.path("report.txt");
  controller.writeToPath(path);
  EXPECT_TRUE(std::filesystem::exists(path));
  EXPECT_EQ(window.desktopCalls, (Calls{"edit " + path}));
}

TEST_F(Editor, OpensNothingThatCouldNotBeWritten) {
  testing::internal::CaptureStderr();
  controller.writeToPath(home.path("missing/report.txt"));
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              testing::EndsWith("] could not save diagnostic_results.txt\n"));
  EXPECT_EQ(window.desktopCalls, Calls());
}

TEST_F(Editor, OpensTheReportOnTheDesktop) {
  failToSubmit();
  EXPECT_EQ(window.desktopCalls, (Calls{"edit " + saved}));
}

// What stands in the place of the report is a folder with something in it.
TEST_F(Editor, OpensTheReportWhereItIsWhenTheDesktopTakesNoFile) {
  std::filesystem::create_directories(saved + "/occupied");
  const std::string log = failToSubmit();
  EXPECT_THAT(log, testing::HasSubstr("] could not save diagnostic_results.txt\n"));
  EXPECT_TRUE(std::filesystem::is_directory(saved + "/occupied"));
  ASSERT_EQ(window.desktopCalls.size(), 1U);
  const std::string opened = window.desktopCalls.front().substr(5);
  EXPECT_EQ("edit " + opened, window.desktopCalls.front());
  EXPECT_TRUE(opened.starts_with(temporary.path())) << opened;
  EXPECT_EQ(support::contentsOf(opened), text::join(controller.results));
  EXPECT_EQ(window.calls,
            (Calls{"start enable", "account enable", "ticket enable", "domain enable",
                   "status hide", "progress stop", "progress hide", "copy show", "open show",
                   "results set There was an error submitting the results", "results links",
                   "scroll show"}));
}

}  // namespace
}  // namespace app
