// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The controls as thin layers over Qt's widgets. Each widget is the window's and outlives
// its control.

#pragma once

#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QTextBrowser>

#include <vector>

#include "ui/controls.h"
#include "ui/gliding_progress_bar.h"

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
  std::string stringValue() const override;
};

class WidgetLabel final : public WidgetControl<Label, QLabel> {
 public:
  using WidgetControl::WidgetControl;
  void setStringValue(const std::string& text) override;
};

class WidgetProgressBar final : public WidgetControl<ProgressBar, GlidingProgressBar> {
 public:
  using WidgetControl::WidgetControl;
  void setMinValue(double value) override;
  void setMaxValue(double value) override;
  void setDoubleValue(double value) override;
  void setControlTint(int tint) override;
  void startAnimation() override;
  void stopAnimation() override;
};

class WidgetRichTextView final : public RichTextView {
 public:
  explicit WidgetRichTextView(QTextBrowser& shown);
  void setString(const std::string& shown) override;
  std::u16string string() const override;
  void addLinks(const std::vector<TextRange>& ranges) override;
  void setTextColor(const Color& color) override;
  void setLinkColor(const Color& color) override;

 private:
  void addLink(const TextRange& range);
  void showLinks();
  TextRange placeInView(const TextRange& range) const;

  QTextBrowser* view;
  std::u16string text;
  /// Where in `text` a line feed follows a carriage return: the view has one unit for both.
  std::vector<std::size_t> lineFeedsLeftOut;
  /// Places in the view.
  std::vector<TextRange> links;
  Color linkColor{};
};

class WidgetWindow final : public Window {
 public:
  explicit WidgetWindow(QWidget& shown) : widget(&shown) {}
  void setTitle(const std::string& title) override;

 private:
  QWidget* widget;
};

}  // namespace ui
