// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The controls as thin layers over Qt's widgets. Each widget is the window's and outlives
// its control.

#pragma once

#include <QLabel>
#include <QLineEdit>
#include <QTextBrowser>

#include "ui/controls.h"
#include "ui/window_widgets.h"

namespace ui {

/// A control of the kind `Interface` over a widget of the class `Widget`.
template <class Interface, class Widget = QWidget>
class WidgetControl : public Interface {
 public:
  explicit WidgetControl(Widget& shown) : widget(&shown) {}
  void setHidden(bool hidden) override { widget->setHidden(hidden); }
  void setEnabled(bool enabled) override { widget->setEnabled(enabled); }

 protected:
  Widget* widget;
};

using WidgetButton = WidgetControl<Button>;
using WidgetScrollView = WidgetControl<ScrollView>;

class WidgetTextField final : public WidgetControl<TextField, QLineEdit> {
 public:
  using WidgetControl::WidgetControl;
  std::string stringValue() const override { return widget->text().toStdString(); }
};

class WidgetLabel final : public WidgetControl<Label, QLabel> {
 public:
  using WidgetControl::WidgetControl;
  void setStringValue(const std::string& text) override {
    widget->setText(QString::fromStdString(text));
  }
};

class WidgetProgressBar final : public WidgetControl<ProgressBar, AnimatedProgressBar> {
 public:
  using WidgetControl::WidgetControl;
  void setRange(int minimum, int maximum) override { widget->setRange(minimum, maximum); }
  void setValue(int value) override { widget->setValue(value); }
  void setAnimated(bool animated) override { widget->setAnimated(animated); }
};

class WidgetRichTextView final : public WidgetControl<RichTextView, QTextBrowser> {
 public:
  using WidgetControl::WidgetControl;
  void setString(const std::string& text) override;
  std::u16string string() const override { return widget->toPlainText().toStdU16String(); }
  void addLinks(const std::vector<TextRange>& ranges) override;
};

class WidgetWindow final : public WidgetControl<Window> {
 public:
  using WidgetControl::WidgetControl;
  void setTitle(const std::string& title) override {
    widget->setWindowTitle(QString::fromStdString(title));
  }
};

}  // namespace ui
