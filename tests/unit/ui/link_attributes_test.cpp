// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The attributes that links have in a view of their own.

#include <QTextBrowser>
#include <QTextCursor>
#include <gtest/gtest.h>

#include "ui/links.h"
#include "ui/widget_controls.h"

namespace ui {
namespace {

class LinkAttributes : public testing::Test {
 protected:
  void show(const std::string& text) {
    view.setString(text);
    view.addLinks(findLinks(view.string()));
  }

  QTextCharFormat formatAt(int position) const {
    QTextCursor cursor(browser.document());
    cursor.setPosition(position + 1);
    return cursor.charFormat();
  }

  void expectLink(int first, int last, const QString& url) const {
    for (int position = first; position <= last; ++position) {
      const QTextCharFormat format = formatAt(position);
      EXPECT_TRUE(format.isAnchor()) << position;
      EXPECT_EQ(format.anchorHref(), url) << position;
      EXPECT_EQ(format.underlineStyle(), QTextCharFormat::SingleUnderline) << position;
      EXPECT_EQ(format.foreground().color(), orange) << position;
    }
  }

  QTextBrowser browser;
  WidgetRichTextView view{browser};
  const QColor orange{255, 165, 0};
};

TEST_F(LinkAttributes, AreALinkAnUnderlineAndOrange) {
  show("at https://a/1 now");
  expectLink(3, 14, QStringLiteral("https://a/1"));
  for (const int plain : {0, 2, 15, 17}) {
    EXPECT_FALSE(formatAt(plain).isAnchor()) << plain;
    EXPECT_EQ(formatAt(plain).underlineStyle(), QTextCharFormat::NoUnderline) << plain;
    EXPECT_EQ(formatAt(plain).foreground().color(), QColor(Qt::white)) << plain;
  }
}

TEST_F(LinkAttributes, OfASecondLinkInsideTheFirstAreItsOwn) {
  const std::string text = "at https://a/?u=http://b now";
  show(text);
  expectLink(3, 15, QStringLiteral("https://a/?u=http://b"));
  expectLink(16, 24, QStringLiteral("http://b"));
  EXPECT_FALSE(formatAt(25).isAnchor());
  for (const int plain : {0, 2, 25, 27}) {
    EXPECT_EQ(formatAt(plain).foreground().color(), QColor(Qt::white)) << plain;
  }
}

}  // namespace
}  // namespace ui
