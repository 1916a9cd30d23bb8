// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The main loop. One per process; main thread only.

#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "platform/descriptor_set.h"
#include "platform/http_connection.h"

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

/// Turns the main loop: tells watched descriptors and runs posted tasks. An error that one of them
/// lets out ends the process.
class Application {
 public:
  Application() = default;
  virtual ~Application() = default;
  Application(const Application&) = delete;
  Application& operator=(const Application&) = delete;

  /// `delegate` must outlive the application's loop. Without windows it is never asked.
  virtual void setDelegate(ApplicationDelegate& delegate);

  /// Turns the loop until the last window has been closed. Returns the exit status.
  virtual int run() = 0;

  /// Waits for the next events, handles them, and returns.
  virtual void turn() = 0;

  /// Runs `task` in a later turn of the loop.
  virtual void post(std::function<void()> task) = 0;

  /// What the loop watches for reading.
  virtual DescriptorSet& descriptors() = 0;

  /// Sends `request`; `delegate` is told of the reply in later turns of the loop. A request in
  /// which nothing moves for `stallLimit` fails. A failure's reason is logged. Returns nothing for
  /// an address that no request can go to: others than those of http and https, with a host.
  virtual std::unique_ptr<HttpConnection> send(HttpRequest request,
                                               HttpConnectionDelegate& delegate,
                                               std::chrono::milliseconds stallLimit) = 0;

  /// Ends the process at once.
  [[noreturn]] void exit(int status);
};

}  // namespace platform
