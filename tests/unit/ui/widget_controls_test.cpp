// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "ui/widget_controls.h"

#include <QAccessible>
#include <QStyleOptionProgressBar>
#include <gtest/gtest.h>

namespace ui {
namespace {

// What a screen reader reads, in the middle of the glide as well.
TEST(WidgetProgressBar, HasTheRangeAndTheValueThatItIsGiven) {
  GlidingProgressBar shown;
  WidgetProgressBar bar(shown);
  bar.setMinValue(0);
  bar.setMaxValue(52);
  bar.setDoubleValue(0);
  bar.startAnimation();
  bar.setDoubleValue(31);
  QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(&shown);
  QAccessibleValueInterface* value = accessible->valueInterface();
  ASSERT_NE(value, nullptr);
  EXPECT_EQ(value->minimumValue(), 0);
  EXPECT_EQ(value->maximumValue(), 52);
  EXPECT_EQ(value->currentValue(), 31);
}

TEST(WidgetProgressBar, IsGreyInGraphiteAndAsUsualOtherwise) {
  GlidingProgressBar shown;
  const QColor usual = shown.palette().color(QPalette::Highlight);
  const QColor grey(0x8c, 0x8c, 0x8c);
  ASSERT_NE(usual, grey);
  WidgetProgressBar bar(shown);
  bar.setControlTint(ProgressBar::graphiteTint);
  EXPECT_EQ(shown.palette().color(QPalette::Highlight), grey);
  bar.setControlTint(0);
  EXPECT_EQ(shown.palette().color(QPalette::Highlight), usual);
}

}  // namespace
}  // namespace ui
