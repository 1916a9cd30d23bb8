// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The event loop, on libuv: descriptors, timers and posted tasks. Main thread only.

#pragma once

#include <uv.h>

#include <chrono>
#include <functional>
#include <memory>
#include <unordered_map>
#include <vector>

namespace platform {

/// Calls its handler once after a delay, and again after each further start().
class Timer {
 public:
  Timer() = default;
  virtual ~Timer() = default;
  Timer(const Timer&) = delete;
  Timer& operator=(const Timer&) = delete;

  /// Starts it, or starts it anew.
  virtual void start(std::chrono::milliseconds delay) = 0;
  virtual void stop() = 0;
};

/// Calls handlers when descriptors are ready, timers expire and tasks are due; an exception of a
/// handler is a fatal error. Its functions are virtual so that a module can call them.
class EventLoop {
 public:
  using Handler = std::function<void()>;
  enum class Interest {
    readable = UV_READABLE,
    writable = UV_WRITABLE,
    both = UV_READABLE | UV_WRITABLE
  };

  /// Throws std::system_error when the system refuses the descriptors that a loop needs.
  EventLoop();
  virtual ~EventLoop();
  EventLoop(const EventLoop&) = delete;
  EventLoop& operator=(const EventLoop&) = delete;

  /// Calls `handler`, in place of an earlier one, again and again while `fd` is ready or at its
  /// end; `fd` becomes non-blocking. Throws std::system_error if it cannot be watched.
  virtual void watch(int fd, Interest interest, Handler handler);

  /// To be called before `fd` is closed; does nothing if it is not watched. From here on the
  /// handler is not called, not even for an event that the running turn has already received.
  virtual void unwatch(int fd);

  /// A timer that has not been started. The loop must outlive it.
  virtual std::unique_ptr<Timer> makeTimer(Handler handler);

  /// Runs `task` in a later turn.
  virtual void post(Handler task);

  /// Turns until nothing is left to wait for.
  void run() { uv_run(&loop, UV_RUN_DEFAULT); }

  /// Waits for the next events and handles them.
  void turn() { uv_run(&loop, UV_RUN_ONCE); }

  /// Handles the events that have already happened, and begins to watch what watch() was called for
  /// since the last turn.
  void turnWithoutWaiting() { uv_run(&loop, UV_RUN_NOWAIT); }

  /// libuv's loop, for child processes and their pipes.
  uv_loop_t* handle() { return &loop; }

  /// Readable when a turn is due; for the loop of Qt to watch.
  int descriptor() const { return uv_backend_fd(&loop); }

  /// In how many milliseconds the next turn is due even if descriptor() is not readable; -1 if
  /// never.
  int timeoutMs() const;

 private:
  struct Watch;
  class UvTimer;

  void runTasks();

  // libuv's handles are freed by their close callbacks only, in a later turn.
  uv_loop_t loop;
  uv_idle_t idle;
  std::unordered_map<int, Watch*> watches;
  std::vector<Handler> tasks;
};

}  // namespace platform
