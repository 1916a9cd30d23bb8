// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// What the controller asks of the window's controls, and in which order. What becomes of it in a
// real window is tested with one.

#include <gtest/gtest.h>

#include "support/fake_controls.h"
#include "support/process_controller.h"

namespace app {
namespace {

using support::Calls;

class ControlOrder : public testing::Test {
 protected:
  MainController controller{support::eventLoop()};
  support::FakeWindow window{controller};
};

TEST_F(ControlOrder, FieldsAndStartButtonAreEnabledAndDisabledTogether) {
  controller.disableUI();
  EXPECT_EQ(window.calls,
            (Calls{"start disable", "account disable", "ticket disable", "domain disable"}));
  window.calls.clear();
  controller.enableUI();
  EXPECT_EQ(window.calls,
            (Calls{"start enable", "account enable", "ticket enable", "domain enable"}));
}

TEST_F(ControlOrder, TheProgressTakesThePlaceOfTheResults) {
  controller.showProgress();
  EXPECT_EQ(window.calls, (Calls{"scroll hide", "caption hide", "status show", "progress show",
                                 "progress start", "copy hide", "open hide"}));
}

TEST_F(ControlOrder, TheButtonsComeWhenTheProgressGoes) {
  controller.hideProgress();
  EXPECT_EQ(window.calls,
            (Calls{"status hide", "progress stop", "progress hide", "copy show", "open show"}));
}

TEST_F(ControlOrder, ATextIsSetThenLinked) {
  controller.setTextView(controller.textResultsLink, "See results at https://a/?u=http://b now");
  EXPECT_EQ(window.calls, (Calls{"results set See results at https://a/?u=http://b now",
                                 "results links 15+22 28+9"}));
}

TEST_F(ControlOrder, TheButtonsActOnTheUrlAsItIs) {
  controller.resultsUrl = " https://r.example/1 \n";
  controller.copyToClipBoardLinkButtonPressed();
  controller.shareButtonPressed();
  EXPECT_EQ(window.desktopCalls,
            (Calls{"copy  https://r.example/1 \n", "browse  https://r.example/1 \n"}));
}

}  // namespace
}  // namespace app
