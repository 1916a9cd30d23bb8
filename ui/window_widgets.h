// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The widgets of the window that differ from Qt's own in one thing each.

#pragma once

#include <QLineEdit>
#include <QPointer>
#include <QPushButton>

namespace ui {

/// Gives the keyboard focus back after a run to the widget that had it before: while the fields and
/// the button are disabled, nothing has it, and somebody who works by keyboard would have to find
/// the first field again. From the start button it goes on to the results, so that no second press
/// of the same key removes them, and a screen reader reads them.
class FocusKeeper final : public QObject {
 public:
  FocusKeeper(QPushButton& start, QWidget& shownResults) : QObject(&start), results(&shownResults) {
    start.installEventFilter(this);
  }

  /// Call this before they are disabled: the focus would go from each to the next, and a screen
  /// reader would read all of them.
  void takeFrom(QWidget* focused);

  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QWidget* results;
  QPointer<QWidget> before;
};

/// A field whose hint can be read: Qt's is half as strong as its text, too faint for many.
class Field final : public QLineEdit {
 public:
  Field() { strengthenHint(); }

 protected:
  void changeEvent(QEvent* event) override;

 private:
  void strengthenHint();
};

}  // namespace ui
