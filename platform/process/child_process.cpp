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

#include "platform/process/spawn.h"
#include "platform/process/termination_signals.h"
#include "platform/process/tools.h"

namespace platform {

namespace {

constexpr std::size_t defaultPipeBytes = 64UL * 1024;

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

void ChildProcess::waitForData(Stream stream, Handler handler) {
  loop.watch(pipeOf(stream).readEnd, std::move(handler));
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
    if (child.error != 0) {
      fail(child.error);
    }
    pid = child.pid;
    addChild(pid);
  }
  exitWatcher.watch(child.exitHandle, std::move(exited));
  for (Pipe* pipe : {&output, &error}) {
    ::close(std::exchange(pipe->writeEnd, -1));
  }
}

void ChildProcess::terminate() const {
  if (pid > 0) {
    terminateChild(pid);
  }
}

// The block is small enough to stay in the processor's cache until its bytes have been copied and
// looked at.
void ChildProcess::readAvailable(Stream stream, ByteBuffer& buffer) {
  static std::array<char, 256UL * 1024> block;
  Pipe& pipe = pipeOf(stream);
  if (pipe.readEnd < 0) {
    return;
  }
  const ssize_t count = ::read(pipe.readEnd, block.data(), block.size());
  if (count < 0) {
    if (errno != EAGAIN && errno != EINTR) {
      fail(errno);
    }
    return;
  }
  const auto bytes = static_cast<std::size_t>(count);
  buffer.append({block.data(), bytes});
  if (bytes >= defaultPipeBytes && !pipe.enlarged) {
    // A command that fills its pipe prints a lot: let it run on while others are read.
    pipe.enlarged = true;
    enlargePipe(pipe.readEnd);
  } else if (bytes == 0) {
    close(pipe);
  }
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
  if (const int result = uv_pipe(ends.data(), 0, 0); result < 0) {
    fail(-result);
  }
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
  if (pipe.readEnd >= 0) {
    loop.unwatch(pipe.readEnd);
    ::close(std::exchange(pipe.readEnd, -1));
  }
}

void ChildProcess::fail(int errorNumber) const {
  throw std::system_error(errorNumber, std::generic_category(), "cannot run " + launchPath);
}

}  // namespace platform
