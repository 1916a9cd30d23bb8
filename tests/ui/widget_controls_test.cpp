// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "ui/widget_controls.h"

#include <gtest/gtest.h>

namespace ui {
namespace {

TEST(WidgetProgressBar, IsGreyInGraphiteAndAsUsualOtherwise) {
  QProgressBar shown;
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
