// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "ui/widget_controls.h"

#include <QAccessible>
#include <QStyleOptionProgressBar>
#include <QTextBrowser>
#include <QTextCursor>
#include <gtest/gtest.h>

#include <string>
#include <vector>

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

// Whether a link is still made of the last ten units of a text, after links of so many.
bool isLinkedAfter(std::size_t units) {
  constexpr std::size_t length = 1UL << 16;
  const std::string last = "https://b/";
  std::string text = "https://a/";
  text.append(length - text.size(), 'x').append(" ").append(last);
  std::vector<TextRange> ranges(units / length, {0, length});
  ranges.push_back({0, units % length});
  ranges.push_back({length + 1, last.size()});
  QTextBrowser shown;
  WidgetRichTextView view(shown);
  view.setString(text);
  view.addLinks(ranges);
  QTextCursor cursor = shown.textCursor();
  cursor.movePosition(QTextCursor::End);
  return cursor.charFormat().isAnchor();
}

TEST(WidgetRichTextView, MakesLinksOfFourMebiUnits) {
  constexpr std::size_t most = 4UL << 20;
  EXPECT_TRUE(isLinkedAfter(most - 10));
  EXPECT_FALSE(isLinkedAfter(most - 9));
}

}  // namespace
}  // namespace ui
