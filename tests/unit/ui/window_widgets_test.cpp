// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "ui/window_widgets.h"

#include <QProxyStyle>
#include <QTest>
#include <gtest/gtest.h>

#include "support/event_loop.h"

namespace ui {
namespace {

class AnimatedProgressBarTest : public testing::Test {
 protected:
  AnimatedProgressBarTest() {
    bar.setRange(0, 4);
    bar.setValue(3);
  }

  AnimatedProgressBar bar;
};

TEST_F(AnimatedProgressBarTest, IsGrey) {
  EXPECT_EQ(bar.palette().color(QPalette::Highlight), QColor(0x8c, 0x8c, 0x8c));
}

TEST_F(AnimatedProgressBarTest, MovesWhileNothingFinishes) {
  bar.setAnimated(true);
  const QImage before = bar.grab().toImage();
  support::turnUntil([&] { return bar.grab().toImage() != before; });
  EXPECT_EQ(bar.value(), 3);
}

TEST_F(AnimatedProgressBarTest, IsStillAfterARun) {
  const QImage before = bar.grab().toImage();
  bar.setAnimated(true);
  support::turnUntil([&] { return bar.grab().toImage() != before; });
  bar.setAnimated(false);
  EXPECT_EQ(bar.grab().toImage(), before);
}

// The style of a desktop whose user has turned movement off.
class StillStyle final : public QProxyStyle {
 public:
  int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                QStyleHintReturn* data) const override {
    return hint == SH_Widget_Animation_Duration
               ? 0
               : QProxyStyle::styleHint(hint, option, widget, data);
  }
};

TEST_F(AnimatedProgressBarTest, IsStillWhereMovementIsTurnedOff) {
  StillStyle style;
  bar.setStyle(&style);
  const QImage before = bar.grab().toImage();
  bar.setAnimated(true);
  QTest::qWait(200);
  EXPECT_EQ(bar.grab().toImage(), before);
}

}  // namespace
}  // namespace ui
