// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "ui/controls.h"

#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPropertyAnimation>
#include <QTextBrowser>
#include <QTextCursor>
#include <QUrl>

#include <cmath>

namespace ui {

namespace {

constexpr int glideMs = 150;

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

}  // namespace

void Control::setHidden(bool hidden) {
  widget->setHidden(hidden);
}

void Control::setEnabled(bool enabled) {
  widget->setEnabled(enabled);
}

TextField::TextField(QLineEdit& shown) : Control(shown), field(&shown) {}

std::string TextField::stringValue() const {
  return field->text().toStdString();
}

Label::Label(QLabel& shown) : Control(shown), label(&shown) {}

void Label::setStringValue(const std::string& text) {
  label->setText(QString::fromStdString(text));
}

ProgressBar::ProgressBar(QProgressBar& shown)
    : Control(shown), bar(&shown), glide(new QPropertyAnimation(&shown, "value", &shown)) {
  glide->setDuration(glideMs);
}

void ProgressBar::setMinValue(double value) {
  bar->setMinimum(toSteps(value));
}

void ProgressBar::setMaxValue(double value) {
  bar->setMaximum(toSteps(value));
}

void ProgressBar::setDoubleValue(double value) {
  glide->stop();
  if (isAnimated) {
    glide->setEndValue(toSteps(value));
    glide->start();
  } else {
    bar->setValue(toSteps(value));
  }
}

void ProgressBar::setControlTint(int tint) {
  QPalette palette;
  if (tint == graphiteTint) {
    palette.setColor(QPalette::Highlight, QColor(0x8c, 0x8c, 0x8c));
  }
  bar->setPalette(palette);
}

void ProgressBar::startAnimation() {
  isAnimated = true;
}

void ProgressBar::stopAnimation() {
  isAnimated = false;
  glide->stop();
}

RichTextView::RichTextView(QTextBrowser& shown) : view(&shown) {}

void RichTextView::setString(const std::string& text) {
  links.clear();
  view->setCurrentCharFormat(QTextCharFormat());
  view->setPlainText(QString::fromStdString(text));
}

std::u16string RichTextView::string() const {
  return view->toPlainText().toStdU16String();
}

void RichTextView::addLink(const TextRange& range) {
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

void RichTextView::setTextColor(const Color& color) {
  QTextCursor all(view->document());
  all.select(QTextCursor::Document);
  all.mergeCharFormat(foreground(color));
  showLinks();
}

void RichTextView::setLinkColor(const Color& color) {
  linkColor = color;
  showLinks();
}

void RichTextView::showLinks() {
  for (const TextRange& link : links) {
    cursorOver(*view, link).mergeCharFormat(foreground(linkColor));
  }
}

void Window::setTitle(const std::string& title) {
  widget->setWindowTitle(QString::fromStdString(title));
}

}  // namespace ui
