// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Qt's application, whose loop turns the event loop of the program.

#pragma once

#include <functional>
#include <memory>

#include "platform/desktop/desktop.h"
#include "platform/event_loop/event_loop.h"

class QApplication;

namespace platform {

/// Shows windows. A fatal error is also shown in a message box.
class QtApplication {
 public:
  /// `eventLoop`, `argc` and `argv` must outlive it; `argc` is set to 1, so that Qt obeys no
  /// argument. If Qt cannot open the display, that is logged and the process ends with status 1.
  QtApplication(EventLoop& eventLoop, int& argc, char** argv);
  ~QtApplication();
  QtApplication(const QtApplication&) = delete;
  QtApplication& operator=(const QtApplication&) = delete;

  /// Turns Qt's loop until the last window has been closed and `shouldTerminate` says so; returns
  /// the exit status. The process then ends within seconds, even if the display does not answer.
  int run(std::function<bool()> shouldTerminate);

  Desktop& desktop() { return *ownDesktop; }

 private:
  class LoopDriver;

  std::unique_ptr<QApplication> qt;
  std::unique_ptr<LoopDriver> driver;
  std::unique_ptr<Desktop> ownDesktop;
};

}  // namespace platform
