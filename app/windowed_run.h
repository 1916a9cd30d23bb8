// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// A controller connected to its window.

#pragma once

#include <memory>

#include "app/entry.h"
#include "platform/desktop/desktop.h"
#include "ui/main_window.h"

namespace app {

/// Connects every control of a new window to the outlets of `owned` and the controller's operations
/// to what is pressed, then sets the controller up. Needs a windowed application that outlives it,
/// and whose desktop `ownDesktop` is.
class WindowedRun {
 public:
  WindowedRun(std::unique_ptr<MainController> owned, platform::Desktop& ownDesktop);

  ui::MainWindow window;
  // Destroyed before the window whose controls it names; commands that still run are then asked to
  // end.
  std::unique_ptr<MainController> controller;
};

/// Shows the window until it is closed. Returns the exit status.
int runWindowed(int& argc, char** argv, const ControllerFactory& makeController);

}  // namespace app
