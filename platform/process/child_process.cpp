// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/process/child_process.h"

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

#include "platform/event_loop/fatal_error.h"
#include "platform/process/spawn.h"
#include "platform/process/termination_signals.h"
#include "platform/process/tools.h"

namespace platform {

namespace {

constexpr ssize_t defaultPipeBytes = 64L * 1024;

// Small enough to stay in the processor's cache until its bytes have been copied and looked at.
std::array<char, 256UL * 1024> block;

}  // namespace

ChildProcess::ChildProcess(EventLoop& eventLoop, std::string path,
                           std::vector<std::string> arguments)
    : loop(eventLoop),
      launchPath(std::move(path)),
      args(std::move(arguments)),
      exitWatcher(eventLoop) {
  open(output);
  open(error);
}

ChildProcess::~ChildProcess() {
  terminate();
  removeChild(pid);
  for (Pipe* pipe : {&output, &error}) {
    close(*pipe);
    if (pipe->writeEnd >= 0) {
      ::close(pipe->writeEnd);
    }
  }
}

void ChildProcess::waitForData(Stream stream, DataHandler handler) {
  Pipe& pipe = pipeOf(stream);
  pipe.handler = [this, &pipe, handler = std::move(handler)](ssize_t count) {
    handler(received(pipe, count));
  };
  pipe.reader = new uv_pipe_t;
  uv_pipe_init(loop.handle(), pipe.reader, 0);
  pipe.reader->data = &pipe;
  check(uv_pipe_open(pipe.reader, pipe.readEnd));
  uv_read_start(
      reinterpret_cast<uv_stream_t*>(pipe.reader),
      [](uv_handle_t* /*reader*/, std::size_t /*suggested*/, uv_buf_t* buffer) {
        *buffer = uv_buf_init(block.data(), block.size());
      },
      [](uv_stream_t* reader, ssize_t count, const uv_buf_t* /*buffer*/) {
        // libuv has 0 for nothing yet.
        if (count != 0) {
          guarded([&] { static_cast<Pipe*>(reader->data)->handler(count == UV_EOF ? 0 : count); });
        }
      });
}

void ChildProcess::launch(Handler exited) {
  const Command command = locateCommand(launchPath, args);
  std::vector<char*> argv;
  argv.reserve(command.args.size() + 2);
  argv.push_back(const_cast<char*>(launchPath.c_str()));
  for (const std::string& arg : command.args) {
    argv.push_back(const_cast<char*>(arg.c_str()));
  }
  argv.push_back(nullptr);
  Spawned child;
  {
    const SignalsBlocked untilItIsAdded;
    child = platform::spawn(command.path.c_str(), argv.data(), output.writeEnd, error.writeEnd);
    check(-child.error);
    pid = child.pid;
    addChild(pid);
  }
  exitWatcher.watch(pid, std::move(exited));
  for (Pipe* pipe : {&output, &error}) {
    ::close(std::exchange(pipe->writeEnd, -1));
  }
}

void ChildProcess::terminate() const {
  if (pid > 0) {
    terminateChild(pid);
  }
}

void ChildProcess::readAvailable(Stream stream, ByteBuffer& buffer) {
  Pipe& pipe = pipeOf(stream);
  if (pipe.readEnd < 0) {
    return;
  }
  const ssize_t count = ::read(pipe.readEnd, block.data(), block.size());
  if (count >= 0 || (errno != EAGAIN && errno != EINTR)) {
    buffer.append(received(pipe, count < 0 ? -errno : count));
  }
}

// What has been read into the block: `count` bytes, 0 at the end, an error number below that.
std::string_view ChildProcess::received(Pipe& pipe, ssize_t count) const {
  check(count);
  if (count >= defaultPipeBytes && !pipe.enlarged) {
    // A command that fills its pipe prints a lot: let it run on while others are read.
    pipe.enlarged = true;
    enlargePipe(pipe.readEnd);
  } else if (count == 0) {
    close(pipe);
  }
  return {block.data(), static_cast<std::size_t>(count)};
}

void ChildProcess::readToEnd(ByteBuffer& outputBytes, ByteBuffer& errorBytes) {
  reap();
  while (output.readEnd >= 0 || error.readEnd >= 0) {
    std::array<pollfd, 2> waits{{{.fd = output.readEnd, .events = POLLIN, .revents = 0},
                                 {.fd = error.readEnd, .events = POLLIN, .revents = 0}}};
    // Nothing is ready where a signal interrupts it, that of another command's end for example.
    poll(waits.data(), waits.size(), -1);
    if (waits[0].revents != 0) {
      readAvailable(Stream::output, outputBytes);
    }
    if (waits[1].revents != 0) {
      readAvailable(Stream::error, errorBytes);
    }
  }
}

void ChildProcess::open(Pipe& pipe) const {
  std::array<int, 2> ends;
  // No command inherits them.
  check(uv_pipe(ends.data(), 0, 0));
  pipe.readEnd = ends[0];
  pipe.writeEnd = ends[1];
}

void ChildProcess::reap() {
  exitWatcher.unwatch();
  removeChild(pid);
  if (pid > 0) {
    waitpid(std::exchange(pid, -1), nullptr, 0);
  }
}

void ChildProcess::close(Pipe& pipe) {
  const int fd = std::exchange(pipe.readEnd, -1);
  if (pipe.reader != nullptr) {
    uv_close(reinterpret_cast<uv_handle_t*>(std::exchange(pipe.reader, nullptr)),
             [](uv_handle_t* reader) { delete reinterpret_cast<uv_pipe_t*>(reader); });
  } else if (fd >= 0) {
    ::close(fd);
  }
}

void ChildProcess::check(ssize_t result) const {
  if (result < 0) {
    throw std::system_error(static_cast<int>(-result), std::generic_category(),
                            "cannot run " + launchPath);
  }
}

}  // namespace platform
