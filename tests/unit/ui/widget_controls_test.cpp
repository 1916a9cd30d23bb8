// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "ui/widget_controls.h"

#include <QAccessible>
#include <QStyleOptionProgressBar>
#include <gtest/gtest.h>

namespace ui {
namespace {

// What a screen reader reads.
TEST(WidgetProgressBar, HasTheRangeAndTheValueThatItIsGiven) {
  AnimatedProgressBar shown;
  WidgetProgressBar bar(shown);
  bar.setRange(0, 52);
  bar.setValue(0);
  bar.setAnimated(true);
  bar.setValue(31);
  QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(&shown);
  QAccessibleValueInterface* value = accessible->valueInterface();
  ASSERT_NE(value, nullptr);
  EXPECT_EQ(value->minimumValue(), 0);
  EXPECT_EQ(value->maximumValue(), 52);
  EXPECT_EQ(value->currentValue(), 31);
}

}  // namespace
}  // namespace ui
