// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "ui/widget_controls.h"

#include <QAccessible>
#include <QTextCursor>

#include "platform/desktop/qt_url.h"

namespace ui {

namespace {

// In a text full of addresses, of which each reaches to its end, links would take minutes to make.
constexpr std::size_t linkedUnitsMax = 4UL << 20;

constexpr QColor linkColor(255, 165, 0);

// What a link to `address` looks like.
QTextCharFormat linkFormat(const QString& address) {
  QTextCharFormat link;
  link.setAnchor(true);
  link.setAnchorHref(address);
  link.setUnderlineStyle(QTextCharFormat::SingleUnderline);
  link.setForeground(linkColor);
  return link;
}

}  // namespace

void WidgetRichTextView::setString(const std::string& text) {
  QTextCharFormat plain;
  plain.setForeground(Qt::white);
  widget->setCurrentCharFormat(plain);
  widget->setPlainText(QString::fromStdString(text));
#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
  // The focus, which a screen reader follows, may be elsewhere after a run.
  QAccessibleAnnouncementEvent results(widget, widget->toPlainText());
  QAccessible::updateAccessibility(&results);
#endif
}

void WidgetRichTextView::addLinks(const std::vector<TextRange>& ranges) {
  const QString text = widget->toPlainText();
  QTextCursor cursor(widget->document());
  // Until its end, the view is not laid out anew for each change.
  cursor.beginEditBlock();
  std::size_t linkedUnits = 0;
  for (const auto& [position, length] : ranges) {
    linkedUnits += length;
    if (linkedUnits > linkedUnitsMax) {
      break;
    }
    // The white space behind an address belongs to the range but not to the address.
    const QString address =
        text.mid(static_cast<qsizetype>(position), static_cast<qsizetype>(length)).trimmed();
    if (platform::urlFromText(address).isValid()) {
      cursor.setPosition(static_cast<int>(position));
      cursor.setPosition(static_cast<int>(position + length), QTextCursor::KeepAnchor);
      cursor.mergeCharFormat(linkFormat(address));
    }
  }
  cursor.endEditBlock();
}

}  // namespace ui
