// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The widgets of the window that differ from Qt's own in one thing each.

#pragma once

#include <QLineEdit>
#include <QProgressBar>
#include <QTimer>

namespace ui {

/// A field whose hint can be read: Qt's is half as strong as its text, too faint for many.
class Field final : public QLineEdit {
 public:
  Field() { strengthenHint(); }

 protected:
  void changeEvent(QEvent* event) override;

 private:
  void strengthenHint();
};

/// A progress bar, grey in place of the desktop's accent colour, over which a shade wanders while
/// it is animated, so that one sees that something happens while nothing finishes.
class AnimatedProgressBar final : public QProgressBar {
 public:
  AnimatedProgressBar();

  /// Without effect where movement is turned off for the whole desktop.
  void setAnimated(bool on);

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  void moveShade();

  QTimer shadeTimer;
  int shadeStep = 0;
};

}  // namespace ui
