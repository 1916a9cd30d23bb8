// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "ui/window_widgets.h"

#include <QEvent>

namespace ui {

void FocusKeeper::takeFrom(QWidget* focused) {
  before = focused == parent() ? results : focused;
  if (focused != nullptr) {
    focused->clearFocus();
  }
}

bool FocusKeeper::eventFilter(QObject* watched, QEvent* event) {
  const auto* start = qobject_cast<QWidget*>(watched);
  if (event->type() == QEvent::EnabledChange && start->isEnabled() && before != nullptr) {
    // Later, since the fields are enabled and the results are shown after the button.
    QMetaObject::invokeMethod(
        before, [this] { before->setFocus(); }, Qt::QueuedConnection);
  }
  return QObject::eventFilter(watched, event);
}

void Field::changeEvent(QEvent* event) {
  QLineEdit::changeEvent(event);
  if (event->type() == QEvent::PaletteChange) {
    strengthenHint();
  }
}

void Field::strengthenHint() {
  constexpr float strength = 0.65F;
  QPalette colors = palette();
  QColor hint = colors.color(QPalette::Text);
  hint.setAlphaF(strength);
  if (colors.color(QPalette::PlaceholderText) != hint) {
    colors.setColor(QPalette::PlaceholderText, hint);
    setPalette(colors);
  }
}

}  // namespace ui
