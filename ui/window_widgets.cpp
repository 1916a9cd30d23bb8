// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "ui/window_widgets.h"

#include <QApplication>
#include <QEvent>
#include <QLinearGradient>
#include <QPainter>
#include <QStyleOptionProgressBar>

namespace ui {

namespace {

constexpr int shadeStepMs = 50;
constexpr int shadeSteps = 40;  // from one end to the other
constexpr double shadeWidth = 0.25;
constexpr float shadeStrength = 0.25F;

}  // namespace

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

AnimatedProgressBar::AnimatedProgressBar() {
  QPalette quiet;
  quiet.setColor(QPalette::Highlight, QColor(0x8c, 0x8c, 0x8c));
  setPalette(quiet);
  shadeTimer.setInterval(shadeStepMs);
  connect(&shadeTimer, &QTimer::timeout, this, &AnimatedProgressBar::moveShade);
}

void AnimatedProgressBar::setAnimated(bool on) {
  shadeStep = 0;
  // Desktops have a setting for those whom movement disturbs.
  const bool mayMove = style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this) > 0;
  if (on && mayMove) {
    shadeTimer.start();
  } else {
    shadeTimer.stop();
  }
  update();
}

void AnimatedProgressBar::moveShade() {
  // Behind a message about an error nothing goes on.
  if (QApplication::activeModalWidget() == nullptr) {
    shadeStep = (shadeStep + 1) % shadeSteps;
    update();
  }
}

void AnimatedProgressBar::paintEvent(QPaintEvent* event) {
  QProgressBar::paintEvent(event);
  if (!shadeTimer.isActive()) {
    return;
  }
  QStyleOptionProgressBar option;
  initStyleOption(&option);
  const QRectF bar = style()->subElementRect(QStyle::SE_ProgressBarContents, &option, this);
  const double width = bar.width() * shadeWidth;
  const double left = bar.left() - width + (bar.width() + width) * shadeStep / shadeSteps;
  QColor shade = palette().color(QPalette::Text);
  QLinearGradient gradient(left, 0, left + width, 0);
  shade.setAlphaF(0);
  gradient.setColorAt(0, shade);
  gradient.setColorAt(1, shade);
  shade.setAlphaF(shadeStrength);
  gradient.setColorAt(0.5, shade);
  QPainter(this).fillRect(bar, gradient);
}

}  // namespace ui
