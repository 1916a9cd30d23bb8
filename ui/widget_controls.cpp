// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "ui/widget_controls.h"

#include <QTextCursor>

#include <algorithm>
#include <cmath>

#include "platform/desktop/qt_url.h"

namespace ui {

namespace {

// In a text full of addresses, of which each reaches to its end, links would take minutes to make.
constexpr std::size_t linkedUnitsMax = 4UL << 20;

int rounded(double value) {
  return static_cast<int>(std::lround(value));
}

// The view keeps these two noncharacters for the ends of its own frames, and would end a line
// there.
bool isFrameMark(char16_t unit) {
  return unit == u'\uFDD0' || unit == u'\uFDD1';
}

QTextCharFormat foreground(const Color& color) {
  QTextCharFormat format;
  format.setForeground(QColor(color.red, color.green, color.blue));
  return format;
}

QTextCursor cursorOver(const QTextBrowser& view, const TextRange& range) {
  QTextCursor cursor(view.document());
  cursor.setPosition(static_cast<int>(range.position));
  cursor.setPosition(static_cast<int>(range.position + range.length), QTextCursor::KeepAnchor);
  return cursor;
}

// While one exists, the view is not laid out anew for each change.
class Batch {
 public:
  explicit Batch(const QTextBrowser& view) : cursor(view.document()) { cursor.beginEditBlock(); }
  ~Batch() { cursor.endEditBlock(); }
  Batch(const Batch&) = delete;
  Batch& operator=(const Batch&) = delete;

 private:
  QTextCursor cursor;
};

}  // namespace

std::string WidgetTextField::stringValue() const {
  return widget->text().toStdString();
}

void WidgetLabel::setStringValue(const std::string& text) {
  widget->setText(QString::fromStdString(text));
}

void WidgetProgressBar::setMinValue(double value) {
  widget->setMinimum(rounded(value));
}

void WidgetProgressBar::setMaxValue(double value) {
  widget->setMaximum(rounded(value));
}

void WidgetProgressBar::setDoubleValue(double value) {
  widget->setValue(rounded(value));
}

void WidgetProgressBar::setControlTint(int tint) {
  QPalette palette;
  if (tint == graphiteTint) {
    palette.setColor(QPalette::Highlight, QColor(0x8c, 0x8c, 0x8c));
  }
  widget->setPalette(palette);
}

void WidgetProgressBar::startAnimation() {
  widget->setGliding(true);
}

void WidgetProgressBar::stopAnimation() {
  widget->setGliding(false);
}

WidgetRichTextView::WidgetRichTextView(QTextBrowser& shown) : view(&shown) {}

void WidgetRichTextView::setString(const std::string& shown) {
  links.clear();
  lineFeedsLeftOut.clear();
  text = QString::fromStdString(shown).toStdU16String();
  std::u16string inView;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == u'\n' && i > 0 && text[i - 1] == u'\r') {
      lineFeedsLeftOut.push_back(i);
    } else {
      inView += isFrameMark(text[i]) ? u'\uFFFD' : text[i];
    }
  }
  view->setCurrentCharFormat(QTextCharFormat());
  view->setPlainText(QString::fromStdU16String(inView));
}

std::u16string WidgetRichTextView::string() const {
  return text;
}

TextRange WidgetRichTextView::placeInView(const TextRange& range) const {
  const auto toView = [this](std::size_t position) {
    const auto after = std::lower_bound(lineFeedsLeftOut.begin(), lineFeedsLeftOut.end(), position);
    return position - static_cast<std::size_t>(after - lineFeedsLeftOut.begin());
  };
  const std::size_t start = toView(range.position);
  return {.position = start, .length = toView(range.position + range.length) - start};
}

void WidgetRichTextView::addLinks(const std::vector<TextRange>& ranges) {
  const Batch batch(*view);
  std::size_t linkedUnits = 0;
  for (const TextRange& range : ranges) {
    linkedUnits += range.length;
    if (linkedUnits > linkedUnitsMax) {
      return;
    }
    addLink(range);
  }
}

void WidgetRichTextView::addLink(const TextRange& range) {
  // The white space behind an address belongs to the range but not to the address.
  const QString address =
      QString::fromStdU16String(text.substr(range.position, range.length)).trimmed();
  if (!platform::urlFromText(address).isValid()) {
    return;
  }
  QTextCharFormat link;
  link.setAnchor(true);
  link.setAnchorHref(address);
  link.setUnderlineStyle(QTextCharFormat::SingleUnderline);
  link.setForeground(Qt::blue);
  const TextRange place = placeInView(range);
  cursorOver(*view, place).mergeCharFormat(link);
  links.push_back(place);
}

void WidgetRichTextView::setTextColor(const Color& color) {
  QTextCursor all(view->document());
  all.select(QTextCursor::Document);
  all.mergeCharFormat(foreground(color));
  showLinks();
}

void WidgetRichTextView::setLinkColor(const Color& color) {
  linkColor = color;
  showLinks();
}

void WidgetRichTextView::showLinks() {
  const Batch batch(*view);
  std::size_t shown = 0;
  for (const TextRange& link : links) {
    // An address may hold another one: what they share is coloured once.
    const std::size_t start = std::max(link.position, shown);
    shown = std::max(shown, link.position + link.length);
    const TextRange rest{.position = start, .length = shown - start};
    cursorOver(*view, rest).mergeCharFormat(foreground(linkColor));
  }
}

void WidgetWindow::setTitle(const std::string& title) {
  widget->setWindowTitle(QString::fromStdString(title));
}

}  // namespace ui
