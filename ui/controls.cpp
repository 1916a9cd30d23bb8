// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "ui/controls.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QTextBlock>
#include <QTextBrowser>
#include <QTextCursor>
#include <QUrl>

#include <cmath>

namespace ui {

namespace {

QColor toQColor(const Color& color) {
  return {color.red, color.green, color.blue};
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

ProgressBar::ProgressBar(QProgressBar& shown) : Control(shown), bar(&shown) {}

void ProgressBar::setMinValue(double value) {
  bar->setMinimum(static_cast<int>(std::lround(value)));
}

void ProgressBar::setMaxValue(double value) {
  bar->setMaximum(static_cast<int>(std::lround(value)));
}

void ProgressBar::setDoubleValue(double value) {
  bar->setValue(static_cast<int>(std::lround(value)));
}

void ProgressBar::setControlTint(int tint) {
  if (tint == graphiteTint) {
    QPalette palette = bar->palette();
    palette.setColor(QPalette::Highlight, QColor(0x8c, 0x8c, 0x8c));
    bar->setPalette(palette);
  }
}

// The bar is determinate and its value is its animation; a style that moves its bars does so while
// they are shown.
void ProgressBar::startAnimation() {}

void ProgressBar::stopAnimation() {
  bar->reset();
}

RichTextView::RichTextView(QTextBrowser& shown) : view(&shown) {}

void RichTextView::setString(const std::string& text) {
  view->setPlainText(QString::fromStdString(text));
}

std::u16string RichTextView::string() const {
  return view->toPlainText().toStdU16String();
}

void RichTextView::addLink(const TextRange& range) {
  QTextCursor cursor(view->document());
  cursor.setPosition(static_cast<int>(range.position));
  cursor.setPosition(static_cast<int>(range.position + range.length), QTextCursor::KeepAnchor);
  const QUrl url(cursor.selectedText());
  if (!url.isValid()) {
    return;
  }
  QTextCharFormat link;
  link.setAnchor(true);
  link.setAnchorHref(url.toString());
  link.setFontUnderline(true);
  cursor.mergeCharFormat(link);
}

void RichTextView::setTextColor(const Color& color) {
  QTextCursor all(view->document());
  all.select(QTextCursor::Document);
  QTextCharFormat format;
  format.setForeground(toQColor(color));
  all.mergeCharFormat(format);
}

void RichTextView::setLinkColor(const Color& color) {
  linkColor = color;
}

void Window::setTitle(const std::string& title) {
  widget->setWindowTitle(QString::fromStdString(title));
}

}  // namespace ui
