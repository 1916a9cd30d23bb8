// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The widget of the window's progress bar.

#pragma once

#include <QProgressBar>
#include <QTimer>
#include <QVariantAnimation>

namespace ui {

/// A progress bar, grey in place of the desktop's accent colour, whose picture glides to a new
/// value, and over which a shade wanders, so that one sees that something happens while nothing
/// finishes. Its range and its value, which a screen reader reads, are exact at every moment.
class GlidingProgressBar : public QProgressBar {
 public:
  explicit GlidingProgressBar(QWidget* parent = nullptr);

  /// While this is off, the picture jumps, and there is no shade.
  void setGliding(bool on);

 protected:
  void initStyleOption(QStyleOptionProgressBar* option) const override;
  void paintEvent(QPaintEvent* event) override;

 private:
  void glideTo(int value);
  void moveShade();

  /// Runs over the values that the picture shows.
  QVariantAnimation glide;
  bool isGliding = false;
  QTimer shadeTimer;
  int shadeStep = 0;
};

}  // namespace ui
