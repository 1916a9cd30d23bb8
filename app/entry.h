// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// From the process's arguments to one of its three modes: usage, headless or windowed.

#pragma once

#include <functional>
#include <memory>

#include "app/main_controller.h"

namespace app {

/// Makes the controller of a process.
using ControllerFactory =
    std::function<std::unique_ptr<MainController>(platform::Application& application)>;

/// The factory of what users run.
std::unique_ptr<MainController> makeMainController(platform::Application& application);

/// How an executable does what needs libraries that not every run needs. Any of them may end the
/// process, or go on as another program.
struct Modes {
  /// Makes the application of a run without a window.
  std::function<std::unique_ptr<platform::Application>(int& argc, char** argv, bool willUpload)>
      makeApplication;
  /// Carries out a run with a window. Returns the exit status.
  std::function<int(int& argc, char** argv, const ControllerFactory& makeController)> runWindowed;
};

/// The whole program: decides on the mode and carries it out. Ends the process in the modes without
/// a window, and returns the status of `runWindowed` otherwise. An uncaught error ends the process.
int runProgram(int argc, char** argv, const ControllerFactory& makeController, const Modes& modes);

/// Whether an argument begins with "-psn_", which desktops of another system add when they launch a
/// program.
bool handleGateKeeperArgument(int argc, const char* const* argv);

}  // namespace app
