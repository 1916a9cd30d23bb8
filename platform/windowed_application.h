// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The application of a run with a window.

#pragma once

#include "platform/desktop.h"
#include "platform/toolkit_application.h"

namespace platform {

/// An application that shows windows. An uncaught error is also told in a message box.
class WindowedApplication final : public ToolkitApplication {
 public:
  /// `argc` and `argv` must outlive the application. Qt gets the program's name only, as it would
  /// obey arguments that are none of this program's: `argc` is set to 1. Without a display to show
  /// a window on, or a thread to paint it with, it says so in the log and ends the process with
  /// status 1.
  WindowedApplication(int& argc, char** argv);
  ~WindowedApplication() override;

  /// Once it has returned, the process ends within seconds, even if the display does not answer.
  int run() override;
  void setDelegate(ApplicationDelegate& delegate) override;

  Desktop& desktop();

 private:
  std::unique_ptr<Desktop> ownDesktop;
};

}  // namespace platform
