// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// From the process's arguments to one of its three modes: usage, headless or windowed.

#pragma once

#include <functional>
#include <memory>

#include "app/main_controller.h"

namespace app {

/// Makes the controller of a process.
using ControllerFactory = std::function<std::unique_ptr<MainController>(platform::EventLoop& loop)>;

/// The factory of what users run.
std::unique_ptr<MainController> makeMainController(platform::EventLoop& loop);

/// Carries out a run with a window, or executes another program that does. Returns the exit status.
using WindowedMode =
    std::function<int(int& argc, char** argv, const ControllerFactory& makeController)>;

/// Runs the program in the mode that its options choose: without a window it ends the process,
/// otherwise it returns the status of `runWindowed`. An uncaught exception is a fatal error.
int runProgram(int argc, char** argv, const ControllerFactory& makeController,
               const WindowedMode& runWindowed);

/// Whether an argument begins with "-psn_", which desktops of another system add when they launch a
/// program.
bool handleGateKeeperArgument(int argc, const char* const* argv);

}  // namespace app
