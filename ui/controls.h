// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The window's controls as the controller sees them, plain operations on UTF-8 text, and the
// outlets by which it reaches them. A run without a window needs no widgets.

#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ui/links.h"

namespace ui {

/// Anything that can be shown and enabled.
class Control {
 public:
  virtual ~Control() = default;
  virtual void setHidden(bool hidden) = 0;
  virtual void setEnabled(bool enabled) = 0;
};

/// A button; the window decides what it does.
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

/// A grey bar that shows a value between two others.
class ProgressBar : public Control {
 public:
  virtual void setRange(int minimum, int maximum) = 0;
  virtual void setValue(int value) = 0;
  virtual void setAnimated(bool animated) = 0;
};

/// White text with orange links, which can be selected but not edited.
class RichTextView : public Control {
 public:
  /// Replaces the whole contents by `text`, without links.
  virtual void setString(const std::string& text) = 0;
  /// The contents, with a line feed for every kind of line end.
  virtual std::u16string string() const = 0;
  /// Makes the text in each of `ranges`, which are in the order of the text, a link to itself. What
  /// is no URL stays plain, and so does what comes behind the first four million units of links.
  virtual void addLinks(const std::vector<TextRange>& ranges) = 0;
};

/// The window itself.
class Window : public Control {
 public:
  virtual void setTitle(const std::string& title) = 0;
};

/// Names a control that may be absent, and does not own it. What is sent to an absent control does
/// nothing; what is asked of it has no answer.
template <class Target>
class Outlet {
 public:
  /// `target` must outlive every use of the outlet.
  void connect(Target& target) { control = &target; }

  /// Calls `operation` on the control.
  template <class Operation, class... Arguments>
  void send(Operation operation, Arguments&&... arguments) const {
    if (control != nullptr) {
      std::invoke(operation, *control, std::forward<Arguments>(arguments)...);
    }
  }

  /// The answer of the control to `question`, or none.
  template <class Question, class... Arguments>
  auto ask(Question question, Arguments&&... arguments) const
      -> std::optional<std::invoke_result_t<Question, Target&, Arguments...>> {
    if (control == nullptr) {
      return std::nullopt;
    }
    return std::invoke(question, *control, std::forward<Arguments>(arguments)...);
  }

 private:
  Target* control = nullptr;
};

}  // namespace ui
