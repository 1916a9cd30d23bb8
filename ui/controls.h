// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The kinds of controls that the window is made of, as the controller sees them: plain operations
// on UTF-8 text. Each is a thin layer over a widget that the window owns and that outlives it.

#pragma once

#include <string>
#include <vector>

#include "ui/text_range.h"

class QLabel;
class QLineEdit;
class QProgressBar;
class QPropertyAnimation;
class QTextBrowser;
class QWidget;

namespace ui {

/// Anything that can be shown and enabled.
class Control {
 public:
  explicit Control(QWidget& shown) : widget(&shown) {}
  void setHidden(bool hidden);
  void setEnabled(bool enabled);

 private:
  QWidget* widget;
};

/// A button; what it does is the window's to say.
class Button : public Control {
 public:
  using Control::Control;
};

/// What encloses a text view.
class ScrollView : public Control {
 public:
  using Control::Control;
};

/// A field with one line of text.
class TextField : public Control {
 public:
  explicit TextField(QLineEdit& shown);
  std::string stringValue() const;

 private:
  QLineEdit* field;
};

/// A line of text that cannot be edited.
class Label : public Control {
 public:
  explicit Label(QLabel& shown);
  void setStringValue(const std::string& text);

 private:
  QLabel* label;
};

/// A bar that shows a value between two others.
class ProgressBar : public Control {
 public:
  /// A quiet grey in place of the desktop's accent colour.
  static constexpr int graphiteTint = 6;

  explicit ProgressBar(QProgressBar& shown);
  void setMinValue(double value);
  void setMaxValue(double value);
  /// While the bar is animated it glides to the new value, otherwise it jumps there.
  void setDoubleValue(double value);
  /// Every tint but graphite leaves the desktop's colour.
  void setControlTint(int tint);
  void startAnimation();
  void stopAnimation();

 private:
  QProgressBar* bar;
  QPropertyAnimation* glide;
  bool isAnimated = false;
};

/// A colour of the results view.
struct Color {
  int red;
  int green;
  int blue;
};

/// Text with attributes, which can be selected but not edited.
class RichTextView {
 public:
  explicit RichTextView(QTextBrowser& shown);
  /// Replaces the whole contents by `text`, without attributes.
  void setString(const std::string& text);
  std::u16string string() const;
  /// Makes the text in `range` a link to itself, underlined and blue. Without effect when it is no
  /// URL.
  void addLink(const TextRange& range);
  /// The colour of the whole text, links included.
  void setTextColor(const Color& color);
  /// The colour in which links are shown, whatever colour their text has.
  void setLinkColor(const Color& color);

 private:
  void showLinks();

  QTextBrowser* view;
  std::vector<TextRange> links;
  Color linkColor{};
};

/// The window itself.
class Window {
 public:
  explicit Window(QWidget& shown) : widget(&shown) {}
  void setTitle(const std::string& title);

 private:
  QWidget* widget;
};

}  // namespace ui
