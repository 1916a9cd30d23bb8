// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The main window: its widgets and where they stand.

#pragma once

#include <QDialog>
#include <QPushButton>

#include <functional>
#include <string>

#include "ui/widget_controls.h"

namespace ui {

/// What the window is asked to do by the person in front of it.
struct WindowActions {
  std::function<void()> start;
  std::function<void()> copy;
  std::function<void()> open;
  std::function<void(const std::string& url)> openLink;
};

/// The one window of the program: it owns its widgets, offers its controls and passes on what is
/// pressed, but knows nothing of runs. It is a dialog, because only dialogs have a default button.
class MainWindow final : public QDialog {
 public:
  /// Needs a windowed application.
  explicit MainWindow(WindowActions pressed);

 protected:
  /// Ignores Escape, which would close the window and with it end a run, and Return in the results,
  /// which would start a run that removes them.
  void keyPressEvent(QKeyEvent* event) override;
  /// Gives the keyboard focus back when the start button is enabled after a run.
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void setUpFields();
  void setUpRun();
  void setUpResults();
  void setUpButtons();
  void arrange();
  void keepPlaces(bool areKept);
  void takeFocusAway();

  const WindowActions actions;
  QLabel purposeLabel{QStringLiteral(
      "Runs network tests on this computer and sends\nwhat they print to Halvik support.")};
  Field accountField;
  Field ticketField;
  Field domainField;
  QPushButton startPush{QStringLiteral("&Start tests")};
  QLabel statusLabel;
  AnimatedProgressBar progressBar;
  QTextBrowser resultsBrowser;
  QLabel captionLabel{QStringLiteral("Send this link to Halvik support:")};
  QPushButton copyPush{QStringLiteral("&Copy link")};
  QPushButton openPush{QStringLiteral("&Open link")};
  /// Has the keyboard focus again after a run, or null: while the fields and the button are
  /// disabled, nothing has it. From the start button it goes on to the results, so that no second
  /// press of the same key removes them, and a screen reader reads them.
  QWidget* focusedBefore = nullptr;

 public:
  WidgetTextField account{accountField};
  WidgetTextField ticket{ticketField};
  WidgetTextField domain{domainField};
  WidgetButton start{startPush};
  WidgetLabel status{statusLabel};
  WidgetProgressBar progress{progressBar};
  WidgetScrollView resultsScroll{resultsBrowser};
  WidgetRichTextView results{resultsBrowser};
  WidgetLabel caption{captionLabel};
  WidgetButton copyLink{copyPush};
  WidgetButton openLink{openPush};
  WidgetWindow titleBar{*this};
};

}  // namespace ui
