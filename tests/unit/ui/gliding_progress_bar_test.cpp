// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "ui/gliding_progress_bar.h"

#include <QStyleOptionProgressBar>
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

}  // namespace
}  // namespace ui
