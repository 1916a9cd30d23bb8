// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The main loop and the toolkit's application behind it. One per process; main thread only.

#pragma once

#include <functional>
#include <memory>

#include "platform/descriptor_set.h"

class QCoreApplication;

namespace platform {

/// What the application asks of its owner.
class ApplicationDelegate {
 public:
  /// Whether closing the last window ends the program.
  virtual bool applicationShouldTerminateAfterLastWindowClosed() = 0;

 protected:
  ApplicationDelegate() = default;
  ApplicationDelegate(const ApplicationDelegate&) = default;
  ApplicationDelegate& operator=(const ApplicationDelegate&) = default;
  ~ApplicationDelegate() = default;
};

/// Turns the main loop: tells watched descriptors, runs posted tasks, and lets the toolkit handle
/// windows and HTTP.
class Application {
 public:
  /// The application of a run without a window: no display is needed, looked for or shown on.
  /// `argc` and `argv` must outlive it.
  Application(int& argc, char** argv);
  virtual ~Application();
  Application(const Application&) = delete;
  Application& operator=(const Application&) = delete;

  /// `delegate` must outlive the application's loop. Without windows it is never asked.
  virtual void setDelegate(ApplicationDelegate& delegate);

  /// Turns the loop until the last window has been closed. Returns the exit status.
  int run();

  /// Waits for the next events, handles them, and returns.
  void turn();

  /// Runs `task` in a later turn of the loop.
  void post(std::function<void()> task);

  /// Ends the process at once.
  [[noreturn]] void exit(int status);

  /// What the loop watches for reading.
  DescriptorSet& descriptors();

 protected:
  /// With what `makeToolkit` makes as the toolkit's own application.
  explicit Application(const std::function<std::unique_ptr<QCoreApplication>()>& makeToolkit);

 private:
  class Parts;
  std::unique_ptr<Parts> parts;
};

}  // namespace platform
