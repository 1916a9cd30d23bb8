// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The main window: its widgets and where they stand.

#pragma once

#include <functional>
#include <memory>
#include <string>

#include "ui/controls.h"

namespace ui {

/// What the window is asked to do by the person in front of it.
struct WindowActions {
  std::function<void()> start;
  std::function<void()> copy;
  std::function<void()> open;
  std::function<void(const std::string& url)> openLink;
};

/// The controls of the window, which owns them.
struct WindowControls {
  TextField& account;
  TextField& ticket;
  TextField& domain;
  Button& start;
  Label& status;
  ProgressBar& progress;
  ScrollView& resultsScroll;
  RichTextView& results;
  Label& caption;
  Button& copy;
  Button& open;
  Window& window;
};

/// The one window of the program. It owns its widgets and knows nothing of runs: it offers its
/// controls and passes on what is pressed. At first it is low. From the first run on every control
/// keeps its place while it is hidden, so that nothing jumps.
class MainWindow {
 public:
  /// Needs a windowed application. The controls that belong to a run are hidden at first.
  explicit MainWindow(WindowActions pressed);
  ~MainWindow();
  MainWindow(const MainWindow&) = delete;
  MainWindow& operator=(const MainWindow&) = delete;

  void show();

  WindowControls controls();

 private:
  class Parts;
  std::unique_ptr<Parts> parts;
};

}  // namespace ui
