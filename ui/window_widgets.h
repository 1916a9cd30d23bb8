// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The widgets of the window that differ from Qt's own in one thing each.

#pragma once

#include <QDialog>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>

namespace ui {

/// A dialog, because only dialogs have a default button, with the frame of an ordinary window.
class Frame final : public QDialog {
 public:
  Frame();

 protected:
  /// Ignores Escape, which would close the window and with it end a run.
  void keyPressEvent(QKeyEvent* event) override;
};

/// Gives the keyboard focus back after a run to the widget that had it before: while the fields and
/// the button are disabled, nothing has it, and somebody who works by keyboard would have to find
/// the first field again.
class FocusKeeper final : public QObject {
 public:
  explicit FocusKeeper(QPushButton& start) : QObject(&start) { start.installEventFilter(this); }

  void remember(QWidget* focused) { before = focused; }

  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
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
