// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The exit of a child process as an event of the loop. Main thread only.

#pragma once

#include "platform/event_loop/event_loop.h"

namespace platform {

/// Waits for one child process of spawn() to exit, and leaves it to its owner to reap it.
class ExitWatcher {
 public:
  /// `eventLoop` must outlive the watch.
  explicit ExitWatcher(EventLoop& eventLoop) : loop(eventLoop) {}
  ~ExitWatcher() { unwatch(); }
  ExitWatcher(const ExitWatcher&) = delete;
  ExitWatcher& operator=(const ExitWatcher&) = delete;

  /// Calls `exited`, once at least, in a turn of the loop after the child `pid` has exited, even if
  /// it did so before this call; it must not have been reaped.
  void watch(int pid, EventLoop::Handler exited);

  /// From here on the handler is not called.
  void unwatch();

 private:
  EventLoop& loop;
  int child = -1;
};

}  // namespace platform
