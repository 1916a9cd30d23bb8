// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Whether all texts of the window can be read, enlarged and in a dark theme: measured on pictures
// of it. The scale is read when a program starts, so that each look has a process of its own.

#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QStyle>
#include <QStyleFactory>
#include <QStyleOptionButton>
#include <QStyleOptionFrame>
#include <QTextBlock>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>

#include "ui/picture.h"
#include "ui/window_fixture.h"

namespace ui {
namespace {

struct Look {
  const char* scale;
  bool isDark;
};

constexpr double contrastMin = 4.5;

// A text, where it stands in the window, how large it is when nothing of it is cut off, and the
// contrast that it needs.
struct ShownText {
  std::string name;
  QRect place;
  QSize size;
  double contrast;
};

QSize sizeOfText(const QWidget& widget, const QString& text) {
  QSize size;
  for (const QString& line : text.split('\n')) {
    size = size.expandedTo(widget.fontMetrics().tightBoundingRect(line).size());
  }
  return size;
}

// A window that is looked at in every phase. What cannot be read is printed on standard error.
class ReadWindow final : public WindowTest {
 public:
  void TestBody() override {}

  // Returns whether everything can be read.
  bool read(double scale) {
    const std::string fifo = home.path("fifo");
    mkfifo(fifo.c_str(), 0600);
    gate = ::open(fifo.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    open({support::answer(support::reply("200 OK", "https://results.halvik.example/r/4f2a91c07b")),
          support::answer(support::reply("500 Oops", "no"))});
    if (HasFailure() || window->devicePixelRatio() != scale) {
      report("no window of this scale");
      return false;
    }
    controller->line = "read line <" + fifo;
    look("idle");
    type("account", QStringLiteral("acme-office"));
    type("ticket", QStringLiteral("48151"));
    type("domain", QStringLiteral("example.com"));
    look("filled in");
    pressStart();
    support::turnUntil([&] { return find<QLabel>("status")->text().startsWith(u"Please wait."); });
    look("running");
    letGo();
    look("finished");
    pressStart();
    letGo();
    look("failed");
    run.reset();
    close(gate);
    return !hasProblem;
  }

 private:
  void report(const std::string& problem) {
    std::cerr << problem << '\n';
    hasProblem = true;
  }

  void letGo() const {
    const std::string lines(57, '\n');
    EXPECT_EQ(write(gate, lines.data(), lines.size()), static_cast<ssize_t>(lines.size()));
    finish();
  }

  void look(const std::string& phase) {
    // The cursor of a field is as dark as its text ought to be.
    if (QWidget* focused = window->focusWidget()) {
      focused->clearFocus();
    }
    QApplication::processEvents();
    const Picture picture(window->grab());
    for (const QWidget* widget : window->findChildren<QWidget*>()) {
      if (widget->isVisible()) {
        look(phase, picture, *widget);
      }
    }
  }

  void look(const std::string& phase, const Picture& picture, const QWidget& widget) {
    for (const ShownText& text : textsOf(widget)) {
      const std::string name = phase + ": " + text.name;
      if (!window->rect().contains(text.place)) {
        report(name + " stands outside of the window");
        continue;
      }
      const Picture::Ink ink = picture.inkIn(text.place);
      if (ink.contrast < text.contrast) {
        report(name + " has a contrast of " + std::to_string(ink.contrast));
      }
      if (ink.size.width() < text.size.width() - 2 || ink.size.height() < text.size.height() - 2) {
        report(name + " is cut off: " + std::to_string(ink.size.width()) + " by " +
               std::to_string(ink.size.height()) + " of " + std::to_string(text.size.width()) +
               " by " + std::to_string(text.size.height()));
      }
    }
  }

  QRect inWindow(const QWidget& widget, const QRect& part) const {
    return {widget.mapTo(window, part.topLeft()), part.size()};
  }

  std::vector<ShownText> textsOf(const QWidget& widget) const {
    // What cannot be used at the moment is meant to be pale.
    const double usual = widget.isEnabled() ? contrastMin : 1;
    if (const auto* label = qobject_cast<const QLabel*>(&widget)) {
      return {{label->text().toStdString(), inWindow(widget, widget.rect()),
               sizeOfText(widget, QString(label->text()).remove('&')), usual}};
    }
    if (const auto* button = qobject_cast<const QPushButton*>(&widget)) {
      QStyleOptionButton option;
      option.initFrom(button);
      const QRect inside =
          widget.style()->subElementRect(QStyle::SE_PushButtonContents, &option, &widget);
      return {{button->text().toStdString(), inWindow(widget, inside),
               sizeOfText(widget, QString(button->text()).remove('&')), usual}};
    }
    if (const auto* field = qobject_cast<const QLineEdit*>(&widget)) {
      QStyleOptionFrame option;
      option.initFrom(field);
      const QRect inside =
          widget.style()->subElementRect(QStyle::SE_LineEditContents, &option, &widget);
      const bool isEmpty = field->text().isEmpty();
      const QString text = isEmpty ? field->placeholderText() : field->text();
      return {{field->objectName().toStdString() + " " + text.toStdString(),
               inWindow(widget, inside), sizeOfText(widget, text), usual}};
    }
    return &widget == results() ? textsOfResults() : std::vector<ShownText>();
  }

  // The parts of the results, which have colours of their own; here they are on one line.
  std::vector<ShownText> textsOfResults() const {
    std::vector<ShownText> texts;
    const QTextBlock block = results()->document()->begin();
    for (auto part = block.begin(); !part.atEnd(); ++part) {
      QTextCursor cursor(results()->document());
      cursor.setPosition(part.fragment().position());
      const QRect first = results()->cursorRect(cursor);
      cursor.setPosition(part.fragment().position() + part.fragment().length());
      const QRect last = results()->cursorRect(cursor);
      texts.push_back({part.fragment().text().toStdString(),
                       inWindow(*results()->viewport(), QRect(first.topLeft(), last.bottomLeft())),
                       sizeOfText(*results(), part.fragment().text().trimmed()), contrastMin});
    }
    return texts;
  }

  int gate = -1;
  bool hasProblem = false;
};

// As desktops have it, with the colours of a theme that is often used.
void darken() {
  QPalette palette(QColor(0x42, 0x42, 0x45), QColor(0x3d, 0x3d, 0x3d));
  palette.setColor(QPalette::Base, QColor(0x3d, 0x3d, 0x3d));
  palette.setColor(QPalette::Window, QColor(0x22, 0x20, 0x20));
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
    palette.setColor(role, Qt::white);
    palette.setColor(QPalette::Disabled, role, QColor(0x80, 0x80, 0x80));
  }
  palette.setColor(QPalette::PlaceholderText, QColor(255, 255, 255, 128));
  palette.setColor(QPalette::Highlight, QColor(0x12, 0x60, 0x8a));
  palette.setColor(QPalette::HighlightedText, QColor(0xf9, 0xf9, 0xf9));
  QApplication::setPalette(palette);
}

[[noreturn]] void readAll(const Look& look) {
  bool isReadable = false;
  {
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    if (look.isDark) {
      darken();
    }
    ReadWindow window;
    isReadable = window.read(std::stod(look.scale));
  }
  // Without a look for leaks: the libraries for fonts keep what they have read.
  std::fflush(stdout);
  std::_Exit(isReadable ? EXIT_SUCCESS : EXIT_FAILURE);
}

class ReadabilityDeathTest : public testing::TestWithParam<Look> {};

TEST_P(ReadabilityDeathTest, NothingIsCutOffOrPale) {
  const support::ScopedVariable scale("QT_SCALE_FACTOR", GetParam().scale);
  EXPECT_EXIT(readAll(GetParam()), testing::ExitedWithCode(EXIT_SUCCESS), "");
}

std::string nameOf(const testing::TestParamInfo<Look>& info) {
  const std::string percent = std::to_string(std::lround(std::stod(info.param.scale) * 100));
  return percent + (info.param.isDark ? "Dark" : "Light");
}

INSTANTIATE_TEST_SUITE_P(Looks, ReadabilityDeathTest,
                         testing::Values(Look{"1", false}, Look{"1", true}, Look{"1.25", false},
                                         Look{"1.25", true}, Look{"2", false}, Look{"2", true}),
                         nameOf);

}  // namespace
}  // namespace ui
