// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// One external command as a child process: two pipes, its launch and its exit. Driven by the event
// loop; main thread only.

#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/event_loop/event_loop.h"
#include "platform/process/byte_buffer.h"
#include "platform/process/exit_watcher.h"

namespace platform {

/// A command whose standard output and standard error are read through pipes; its exit status is
/// not kept. It inherits standard input, environment and working directory, but no other descriptor
/// of this program, and is ended by a signal that ends the program.
class ChildProcess {
 public:
  enum class Stream { output, error };
  using Handler = EventLoop::Handler;
  using DataHandler = std::function<void(std::string_view data)>;

  /// `eventLoop` must outlive the child. Throws std::system_error, which names `path`, when the
  /// system refuses a pipe.
  ChildProcess(EventLoop& eventLoop, std::string path, std::vector<std::string> arguments);

  /// A command that still runs is sent the termination signal and left to itself.
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  /// From here on calls `handler` with what the stream delivers, and with nothing at its end.
  void waitForData(Stream stream, DataHandler handler);

  /// Starts the command, and calls `exited` once, when it has ended (its pipes may still hold
  /// data). Throws std::system_error naming the path and the reason when it cannot be started.
  void launch(Handler exited);

  /// Sends the command, if it still runs, the termination signal, and continues a stopped one.
  void terminate() const;

  /// Appends what is there to be read now to `buffer`, with one read. Does not wait.
  void readAvailable(Stream stream, ByteBuffer& buffer);

  /// Reads both streams, side by side, to their end and closes them. Waits as long as any
  /// descendant of the command holds one open.
  void readToEnd(ByteBuffer& output, ByteBuffer& error);

  /// Reaps a command that has ended; readToEnd() does so as well.
  void reap();

 private:
  struct Pipe {
    int readEnd = -1;
    int writeEnd = -1;
    bool enlarged = false;
    // Owns the read end once the loop waits for data.
    uv_pipe_t* reader = nullptr;
    std::function<void(ssize_t count)> handler;
  };

  Pipe& pipeOf(Stream stream) { return stream == Stream::output ? output : error; }
  void open(Pipe& pipe) const;
  static void close(Pipe& pipe);
  std::string_view received(Pipe& pipe, ssize_t count) const;
  // Throws if a result is negative: an error number below zero.
  void check(ssize_t result) const;

  EventLoop& loop;
  std::string launchPath;
  std::vector<std::string> args;
  Pipe output;
  Pipe error;
  ExitWatcher exitWatcher;
  int pid = -1;
};

}  // namespace platform
