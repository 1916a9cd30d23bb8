// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "ui/gliding_progress_bar.h"

#include <QStyleOptionProgressBar>

#include <cmath>

namespace ui {

namespace {

constexpr int glideMs = 150;
// Styles paint in whole steps; a hundred of them for each unit let the picture glide.
constexpr int stepsPerUnit = 100;

}  // namespace

GlidingProgressBar::GlidingProgressBar(QWidget* parent) : QProgressBar(parent) {
  glide.setDuration(glideMs);
  connect(this, &QProgressBar::valueChanged, this, &GlidingProgressBar::glideTo);
  connect(&glide, &QVariantAnimation::valueChanged, this, [this] { update(); });
}

void GlidingProgressBar::setGliding(bool on) {
  isGliding = on;
  glide.stop();
  update();
}

void GlidingProgressBar::glideTo(int value) {
  const QVariant shown =
      glide.state() == QAbstractAnimation::Running ? glide.currentValue() : glide.endValue();
  glide.stop();
  glide.setStartValue(shown.isValid() ? shown : QVariant(0.0));
  glide.setEndValue(static_cast<double>(value));
  if (isGliding) {
    glide.start();
  }
}

void GlidingProgressBar::initStyleOption(QStyleOptionProgressBar* option) const {
  QProgressBar::initStyleOption(option);
  const bool isMoving = glide.state() == QAbstractAnimation::Running;
  const double shown = isMoving ? glide.currentValue().toDouble() : value();
  option->minimum = minimum() * stepsPerUnit;
  option->maximum = maximum() * stepsPerUnit;
  option->progress = static_cast<int>(std::lround(shown * stepsPerUnit));
}

}  // namespace ui
