// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "ui/main_window.h"

#include <QAccessible>
#include <QLabel>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextCursor>
#include <gmock/gmock.h>

#include "ui/window_fixture.h"

namespace ui {
namespace {

class MainWindowTest : public WindowTest {
 protected:
  void SetUp() override {
    open({support::answer(support::reply("200 OK", "https://r.example/1"))});
  }

  void show(const std::string& text) {
    controller->setTextView(controller->textResultsLink, text);
    results()->show();
  }

  // The format of the character before which `position` stands.
  QTextCharFormat formatAt(int position) const {
    QTextCursor cursor(results()->document());
    cursor.setPosition(position + 1);
    return cursor.charFormat();
  }

  void expectPlain(int position) const {
    EXPECT_FALSE(formatAt(position).isAnchor()) << position;
    EXPECT_EQ(formatAt(position).foreground().color(), QColor(Qt::white)) << position;
    EXPECT_FALSE(formatAt(position).fontUnderline()) << position;
  }

  void expectLink(int position, const QString& url) const {
    EXPECT_TRUE(formatAt(position).isAnchor()) << position;
    EXPECT_EQ(formatAt(position).anchorHref(), url) << position;
    EXPECT_EQ(formatAt(position).underlineStyle(), QTextCharFormat::SingleUnderline) << position;
    EXPECT_EQ(formatAt(position).foreground().color(), QColor(255, 165, 0)) << position;
  }
};

TEST_F(MainWindowTest, IsTitledWithTheVersion) {
  EXPECT_EQ(window->windowTitle(), QLatin1String("Halvik Diagnostic v1.0.0"));
}

TEST_F(MainWindowTest, ShowsLinksInOrangeAndTheRestInWhite) {
  show("See results at https://r.example/1");
  for (const int plain : {0, 8, 14}) {
    expectPlain(plain);
  }
  for (const int linked : {15, 20, 33}) {
    expectLink(linked, QStringLiteral("https://r.example/1"));
  }
}

TEST_F(MainWindowTest, LinksTheWhiteSpaceBehindAnAddressAndNoMore) {
  show("go http://a/1 now");
  expectPlain(2);
  expectLink(3, QStringLiteral("http://a/1"));
  expectLink(13, QStringLiteral("http://a/1"));
  expectPlain(14);
}

TEST_F(MainWindowTest, LinksAnAddressThatEndsALine) {
  show("See results at https://r.example/1\n");
  expectLink(15, QStringLiteral("https://r.example/1"));
}

TEST_F(MainWindowTest, PassesOverAnAddressBeforeASecureOne) {
  show("x http://a/1 y https://b/2");
  for (const int plain : {2, 11, 13}) {
    expectPlain(plain);
  }
  expectLink(15, QStringLiteral("https://b/2"));
}

TEST_F(MainWindowTest, LinksTheAddressThatStandsInTheText) {
  for (const char* address :
       {"https://a.example/x%20", "https://a.example/?q=a%20", "https://a.example/#f%20",
        "https://a.example/%C2%A0", "https://a.example/a|b", "https://a.example/100%"}) {
    show("See " + std::string(address) + "\u00A0here");
    expectLink(4, QString::fromUtf8(address));
  }
}

// In the view, such a line end is one unit.
TEST_F(MainWindowTest, LinksAtTheRightPlacesBehindCarriageReturns) {
  show("a\r\nb\r\nhttps://a/1\r\nc https://b/2\r\n");
  EXPECT_EQ(shownText(), "a\nb\nhttps://a/1\nc https://b/2\n");
  expectPlain(2);
  expectLink(4, QStringLiteral("https://a/1"));
  expectLink(14, QStringLiteral("https://a/1"));
  expectPlain(16);
  expectLink(18, QStringLiteral("https://b/2"));
}

TEST_F(MainWindowTest, LeavesWhatIsNoUrlPlain) {
  show("at https://[ now");
  expectPlain(3);
  expectPlain(8);
}

TEST_F(MainWindowTest, StartsAnewWithEveryText) {
  show("https://a/1");
  show("There was an error submitting the results");
  for (const int plain : {0, 5, 40}) {
    expectPlain(plain);
  }
}

TEST_F(MainWindowTest, ShowsTextAsItIs) {
  show("See results at <b>&amp;</b> caf\xC3\xA9");
  EXPECT_EQ(shownText(), "See results at <b>&amp;</b> caf\xC3\xA9");
}

TEST_F(MainWindowTest, OpensALinkThatIsClicked) {
  show("See results at https://r.example/1");
  QTextCursor cursor(results()->document());
  cursor.setPosition(20);
  QTest::mouseClick(results()->viewport(), Qt::LeftButton, Qt::NoModifier,
                    results()->cursorRect(cursor).center());
  EXPECT_EQ(desktop.opened, QStringList(QStringLiteral("https://r.example/1")));
}

TEST_F(MainWindowTest, ALinkAndTheOpenButtonOpenTheSame) {
  const std::vector<std::pair<std::string, QString>> cases{
      {"https://a.example/x%20", "https://a.example/x%20"},
      {"https://a.example/?q=a%20", "https://a.example/?q=a%20"},
      {"https://a.example/#f%20", "https://a.example/#f%20"},
      {"https://a.example/%C2%A0", "https://a.example/%C2%A0"},
      {"https://a.example/a|b", "https://a.example/a%7Cb"},
      {"https://a.example/\u00E4", "https://a.example/%C3%A4"},
      {"https://a.example/1\n", "https://a.example/1"},
  };
  for (const auto& [address, opened] : cases) {
    desktop.opened.clear();
    show(address);
    controller->resultsUrl = address;
    controller->shareButtonPressed();
    QTextCursor cursor(results()->document());
    cursor.setPosition(5);
    QTest::mouseClick(results()->viewport(), Qt::LeftButton, Qt::NoModifier,
                      results()->cursorRect(cursor).center());
    EXPECT_EQ(desktop.opened, QStringList({opened, opened}));
  }
}

TEST_F(MainWindowTest, OpensALinkByKeyboard) {
  show("See results at https://r.example/1");
  results()->setFocus();
  QTest::keyClick(results(), Qt::Key_Tab);
  QTest::keyClick(results(), Qt::Key_Return);
  EXPECT_EQ(desktop.opened, QStringList(QStringLiteral("https://r.example/1")));
}

TEST_F(MainWindowTest, CannotBeEditedButSelected) {
  show("See results at https://r.example/1");
  EXPECT_TRUE(results()->isReadOnly());
  QTest::keyClicks(results(), QStringLiteral("x"));
  EXPECT_EQ(shownText(), "See results at https://r.example/1");
  QTest::keySequence(results(), QKeySequence::SelectAll);
  EXPECT_EQ(results()->textCursor().selectedText().toStdString(), shownText());
}

TEST_F(MainWindowTest, BreaksALongAddressIntoLines) {
  const std::string url = "https://results.halvik.example/" + std::string(269, 'x');
  show("See results at " + url);
  QApplication::processEvents();
  EXPECT_EQ(results()->horizontalScrollBar()->maximum(), 0);
  EXPECT_EQ(results()->verticalScrollBar()->maximum(), 0);
}

TEST_F(MainWindowTest, ReturnInAFieldStarts) {
  for (const char* field : {"account", "ticket", "domain"}) {
    find(field)->setFocus();
    QTest::keyClick(find(field), Qt::Key_Return);
    EXPECT_FALSE(find("start")->isEnabled()) << field;
    finish();
  }
}

TEST_F(MainWindowTest, ReturnInTheResultsStartsNothing) {
  runOnce();
  for (const auto key : {Qt::Key_Return, Qt::Key_Enter}) {
    results()->setFocus();
    QTest::keyClick(results(), key);
    EXPECT_TRUE(find("start")->isEnabled());
    EXPECT_TRUE(results()->isVisible());
  }
  EXPECT_EQ(desktop.opened, QStringList());
}

TEST_F(MainWindowTest, TheKeyboardGoesOnFromTheStartButtonToTheResults) {
  find("start")->setFocus();
  QTest::keyClick(find("start"), Qt::Key_Space);
  finish();
  support::turnUntil([&] { return window->focusWidget() == results(); });
}

TEST_F(MainWindowTest, EscapeDoesNotCloseIt) {
  QTest::keyClick(find("account"), Qt::Key_Escape);
  EXPECT_TRUE(window->isVisible());
}

TEST_F(MainWindowTest, TheFocusGoesFromTopToBottom) {
  for (const char* name : {"results", "copy", "open"}) {
    find(name)->show();
  }
  const std::vector<std::string> order{"account", "ticket", "domain", "start",
                                       "results", "copy",   "open",   "account"};
  find("account")->setFocus();
  for (const std::string& name : order) {
    ASSERT_NE(QApplication::focusWidget(), nullptr);
    EXPECT_EQ(QApplication::focusWidget()->objectName().toStdString(), name);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
  }
}

TEST_F(MainWindowTest, EveryControlHasANameAndARole) {
  const std::vector<std::tuple<const char*, QAccessible::Role, const char*>> expected{
      {"account", QAccessible::EditableText, "Halvik account:"},
      {"ticket", QAccessible::EditableText, "Support ticket:"},
      {"domain", QAccessible::EditableText, "Domain to test:"},
      {"start", QAccessible::Button, "Start tests"},
      {"status", QAccessible::StaticText, "Please wait."},
      {"progress", QAccessible::ProgressBar, "Progress"},
      {"results", QAccessible::StaticText, "Results"},
      {"caption", QAccessible::StaticText, "Send this link to Halvik support:"},
      {"copy", QAccessible::Button, "Copy link"},
      {"open", QAccessible::Button, "Open link"},
  };
  find<QLabel>("status")->setText(QStringLiteral("Please wait."));
  for (const auto& [name, role, text] : expected) {
    QAccessibleInterface* control = QAccessible::queryAccessibleInterface(find(name));
    EXPECT_EQ(control->role(), role) << name;
    EXPECT_EQ(control->text(QAccessible::Name).remove('&').toStdString(), text);
  }
}

}  // namespace
}  // namespace ui
