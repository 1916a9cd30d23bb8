// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// What can be measured on a picture of a window.

#pragma once

#include <QColor>
#include <QImage>
#include <QPixmap>
#include <QRect>

#include <algorithm>
#include <cmath>
#include <map>

namespace ui {

/// How bright a colour looks, from 0 to 1: relative luminance as the accessibility guidelines for
/// web content define it.
inline double luminance(const QColor& color) {
  const auto linear = [](double part) {
    return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
         0.0722 * linear(color.blueF());
}

/// Their contrast, from 1 to 21; text needs 4.5.
inline double contrast(const QColor& one, const QColor& other) {
  const auto [dark, bright] = std::minmax({luminance(one), luminance(other)});
  return (bright + 0.05) / (dark + 0.05);
}

class Picture {
 public:
  /// What is drawn on a ground of one colour.
  struct Ink {
    /// Of the colour that stands out most: thin strokes are paler than their colour.
    double contrast = 1;
    /// The smallest rectangle that holds it, in the window's own measure.
    QSizeF size;
  };

  explicit Picture(const QPixmap& grabbed)
      : image(grabbed.toImage()), scale(grabbed.devicePixelRatio()) {}

  /// What is drawn in this part of the window. The ground is the colour of most of its pixels.
  Ink inkIn(const QRect& part) const {
    const QRect pixels =
        QRectF(part.x() * scale, part.y() * scale, part.width() * scale, part.height() * scale)
            .toAlignedRect()
            .intersected(image.rect());
    const QColor ground = mostFrequent(pixels);
    Ink ink;
    QRect drawn;
    forEachPixel(pixels, [&](int x, int y) {
      const double here = contrast(image.pixelColor(x, y), ground);
      ink.contrast = std::max(ink.contrast, here);
      if (here > visible) {
        drawn |= QRect(x, y, 1, 1);
      }
    });
    ink.size = QSizeF(drawn.size()) / scale;
    return ink;
  }

 private:
  // Paler than that is the edge of a stroke, or of a shade.
  static constexpr double visible = 1.3;

  template <class Action>
  static void forEachPixel(const QRect& pixels, const Action& action) {
    for (int y = pixels.top(); y <= pixels.bottom(); ++y) {
      for (int x = pixels.left(); x <= pixels.right(); ++x) {
        action(x, y);
      }
    }
  }

  QColor mostFrequent(const QRect& pixels) const {
    std::map<QRgb, int> counts;
    forEachPixel(pixels, [&](int x, int y) { ++counts[image.pixel(x, y)]; });
    const auto most = std::max_element(counts.begin(), counts.end(), [](auto& one, auto& other) {
      return one.second < other.second;
    });
    return most == counts.end() ? QColor() : QColor(most->first);
  }

  QImage image;
  double scale;
};

}  // namespace ui
