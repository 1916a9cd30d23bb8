// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The kinds of controls that the window is made of, as the controller sees them: plain operations
// on UTF-8 text. What they are made of is not said here, so that a run without a window needs no
// widgets.

#pragma once

#include <string>
#include <vector>

#include "ui/text_range.h"

namespace ui {

/// Anything that can be shown and enabled.
class Control {
 public:
  Control() = default;
  virtual ~Control() = default;
  Control(const Control&) = delete;
  Control& operator=(const Control&) = delete;
  virtual void setHidden(bool hidden) = 0;
  virtual void setEnabled(bool enabled) = 0;
};

/// A button; what it does is the window's to say.
class Button : public Control {};

/// What encloses a text view.
class ScrollView : public Control {};

/// A field with one line of text.
class TextField : public Control {
 public:
  virtual std::string stringValue() const = 0;
};

/// A line of text that cannot be edited.
class Label : public Control {
 public:
  virtual void setStringValue(const std::string& text) = 0;
};

/// A bar that shows a value between two others.
class ProgressBar : public Control {
 public:
  /// A quiet grey in place of the desktop's accent colour.
  static constexpr int graphiteTint = 6;

  virtual void setMinValue(double value) = 0;
  virtual void setMaxValue(double value) = 0;
  /// While the bar is animated it glides to the new value, otherwise it jumps there.
  virtual void setDoubleValue(double value) = 0;
  /// Every tint but graphite leaves the desktop's colour.
  virtual void setControlTint(int tint) = 0;
  virtual void startAnimation() = 0;
  virtual void stopAnimation() = 0;
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
  RichTextView() = default;
  virtual ~RichTextView() = default;
  RichTextView(const RichTextView&) = delete;
  RichTextView& operator=(const RichTextView&) = delete;
  /// Replaces the whole contents by `text`, without attributes.
  virtual void setString(const std::string& text) = 0;
  virtual std::u16string string() const = 0;
  /// Makes the text in each of `ranges`, which are in the order of the text, a link to itself,
  /// underlined and blue. What is no URL stays plain, and so does what comes behind the first four
  /// million units of links.
  virtual void addLinks(const std::vector<TextRange>& ranges) = 0;
  /// The colour of the whole text, links included.
  virtual void setTextColor(const Color& color) = 0;
  /// The colour in which links are shown, whatever colour their text has.
  virtual void setLinkColor(const Color& color) = 0;
};

/// The window itself.
class Window {
 public:
  Window() = default;
  virtual ~Window() = default;
  Window(const Window&) = delete;
  Window& operator=(const Window&) = delete;
  virtual void setTitle(const std::string& title) = 0;
};

}  // namespace ui
