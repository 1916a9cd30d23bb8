// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "ui/widget_controls.h"

#include <QTextCursor>
#include <QUrl>

#include <algorithm>
#include <cmath>

namespace ui {

namespace {

constexpr int glideMs = 150;
// In a text full of addresses, of which each reaches to its end, links would take minutes to make.
constexpr std::size_t linkedUnitsMax = 4UL << 20;

// A bar counts in whole steps; a hundred of them for each unit let it glide.
int toSteps(double value) {
  return static_cast<int>(std::lround(value * 100));
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

WidgetProgressBar::WidgetProgressBar(QProgressBar& shown)
    : WidgetControl(shown), glide(new QPropertyAnimation(&shown, "value", &shown)) {
  glide->setDuration(glideMs);
}

void WidgetProgressBar::setMinValue(double value) {
  widget->setMinimum(toSteps(value));
}

void WidgetProgressBar::setMaxValue(double value) {
  widget->setMaximum(toSteps(value));
}

void WidgetProgressBar::setDoubleValue(double value) {
  glide->stop();
  if (isAnimated) {
    glide->setEndValue(toSteps(value));
    glide->start();
  } else {
    widget->setValue(toSteps(value));
  }
}

void WidgetProgressBar::setControlTint(int tint) {
  QPalette palette;
  if (tint == graphiteTint) {
    palette.setColor(QPalette::Highlight, QColor(0x8c, 0x8c, 0x8c));
  }
  widget->setPalette(palette);
}

void WidgetProgressBar::startAnimation() {
  isAnimated = true;
}

void WidgetProgressBar::stopAnimation() {
  isAnimated = false;
  glide->stop();
}

WidgetRichTextView::WidgetRichTextView(QTextBrowser& shown) : view(&shown) {}

void WidgetRichTextView::setString(const std::string& text) {
  links.clear();
  view->setCurrentCharFormat(QTextCharFormat());
  view->setPlainText(QString::fromStdString(text));
}

std::u16string WidgetRichTextView::string() const {
  return view->toPlainText().toStdU16String();
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
  const QUrl url(cursorOver(*view, range).selectedText().trimmed(), QUrl::StrictMode);
  if (!url.isValid()) {
    return;
  }
  QTextCharFormat link;
  link.setAnchor(true);
  link.setAnchorHref(url.toString());
  link.setUnderlineStyle(QTextCharFormat::SingleUnderline);
  link.setForeground(Qt::blue);
  cursorOver(*view, range).mergeCharFormat(link);
  links.push_back(range);
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
