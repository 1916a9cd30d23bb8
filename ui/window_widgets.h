// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The widgets of the window that differ from Qt's own in one thing each.

#pragma once

#include <QLineEdit>
#include <QProgressBar>
#include <QTimer>
#include <QVariantAnimation>

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

/// A progress bar, grey in place of the desktop's accent colour, whose picture glides to a new
/// value, and over which a shade wanders, so that one sees that something happens while nothing
/// finishes. Its range and its value, which a screen reader reads, are exact at every moment.
class GlidingProgressBar : public QProgressBar {
 public:
  explicit GlidingProgressBar(QWidget* parent = nullptr);

  /// While this is off, or movement turned off for the whole desktop, the picture jumps, and there
  /// is no shade.
  void setGliding(bool on);

 protected:
  void initStyleOption(QStyleOptionProgressBar* option) const override;
  void paintEvent(QPaintEvent* event) override;

 private:
  void glideTo(int value);
  void moveShade();

  QVariantAnimation glide;
  /// The value that the picture shows.
  double shown = 0;
  QTimer shadeTimer;
  int shadeStep = 0;
};

}  // namespace ui
