// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "ui/window_widgets.h"

#include <QProxyStyle>
#include <QStyleOptionProgressBar>
#include <QTest>
#include <gtest/gtest.h>

#include "support/event_loop.h"

namespace ui {
namespace {

class GlidingProgressBarTest : public testing::Test {
 protected:
  class Bar final : public GlidingProgressBar {
   public:
    /// The part of the bar that its picture shows as done.
    double shown() const {
      QStyleOptionProgressBar option;
      initStyleOption(&option);
      return static_cast<double>(option.progress - option.minimum) /
             (option.maximum - option.minimum);
    }
  };

  GlidingProgressBarTest() {
    bar.setRange(0, 4);
    bar.setValue(0);
  }

  Bar bar;
};

TEST_F(GlidingProgressBarTest, IsGrey) {
  EXPECT_EQ(bar.palette().color(QPalette::Highlight), QColor(0x8c, 0x8c, 0x8c));
}

TEST_F(GlidingProgressBarTest, JumpsUnlessItIsToGlide) {
  bar.setValue(3);
  EXPECT_EQ(bar.shown(), 0.75);
}

TEST_F(GlidingProgressBarTest, GlidesFromWhatItShowsToTheNewValue) {
  bar.setValue(1);
  bar.setGliding(true);
  bar.setValue(3);
  EXPECT_EQ(bar.value(), 3);
  EXPECT_EQ(bar.shown(), 0.25);
  double last = 0.25;
  support::turnUntil([&] {
    EXPECT_GE(bar.shown(), last);
    last = bar.shown();
    return last == 0.75;
  });
}

TEST_F(GlidingProgressBarTest, IsThereAtOnceWhenItStopsGliding) {
  bar.setGliding(true);
  bar.setValue(4);
  bar.setGliding(false);
  EXPECT_EQ(bar.shown(), 1);
}

TEST_F(GlidingProgressBarTest, MovesWhileNothingFinishes) {
  bar.setGliding(true);
  bar.setValue(3);
  support::turnUntil([&] { return bar.shown() == 0.75; });
  const QImage before = bar.grab().toImage();
  support::turnUntil([&] { return bar.grab().toImage() != before; });
  EXPECT_EQ(bar.value(), 3);
  EXPECT_EQ(bar.shown(), 0.75);
}

TEST_F(GlidingProgressBarTest, IsStillAfterARun) {
  bar.setValue(3);
  const QImage before = bar.grab().toImage();
  bar.setGliding(true);
  support::turnUntil([&] { return bar.grab().toImage() != before; });
  bar.setGliding(false);
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

TEST_F(GlidingProgressBarTest, IsStillWhereMovementIsTurnedOff) {
  StillStyle style;
  bar.setStyle(&style);
  bar.setValue(3);
  const QImage before = bar.grab().toImage();
  bar.setGliding(true);
  QTest::qWait(200);
  EXPECT_EQ(bar.grab().toImage(), before);
}

}  // namespace
}  // namespace ui
