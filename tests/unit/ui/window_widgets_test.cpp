// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "ui/window_widgets.h"

#include "ui/window_fixture.h"

namespace ui {
namespace {

class WindowWidgetsTest : public WindowTest {
 protected:
  void SetUp() override {
    open({support::answer(support::reply("200 OK", "https://r.example/1"))});
  }
};

TEST_F(WindowWidgetsTest, ReturnInTheResultsStartsNothing) {
  runOnce();
  for (const auto key : {Qt::Key_Return, Qt::Key_Enter}) {
    results()->setFocus();
    QTest::keyClick(results(), key);
    EXPECT_TRUE(find("start")->isEnabled());
    EXPECT_TRUE(results()->isVisible());
  }
  EXPECT_EQ(desktop.opened, QStringList());
}

TEST_F(WindowWidgetsTest, TheKeyboardGoesOnFromTheStartButtonToTheResults) {
  find("start")->setFocus();
  QTest::keyClick(find("start"), Qt::Key_Space);
  finish();
  support::turnUntil([&] { return window->focusWidget() == results(); });
}

}  // namespace
}  // namespace ui
