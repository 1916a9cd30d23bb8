// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The main window.

#pragma once

#include <memory>

#include "ui/controls.h"

namespace ui {

/// The one window of the program. It owns its widgets and knows nothing of runs.
class MainWindow {
 public:
  /// Needs a windowed application.
  MainWindow();
  ~MainWindow();
  MainWindow(const MainWindow&) = delete;
  MainWindow& operator=(const MainWindow&) = delete;

  void show();
  Window& window();

 private:
  class Parts;
  std::unique_ptr<Parts> parts;
};

}  // namespace ui
