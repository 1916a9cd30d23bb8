// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <utility>

#include "platform/process_setup.h"
#include "platform/tools.h"

namespace platform {

namespace {

constexpr std::size_t defaultPipeBytes = 64UL * 1024;
constexpr int largePipeBytes = 1024 * 1024;

class SpawnAttributes {
 public:
  SpawnAttributes() {
    posix_spawnattr_init(&attributes);
    sigset_t signals;
    sigemptyset(&signals);
    posix_spawnattr_setsigmask(&attributes, &signals);
    // Libraries ignore signals behind our back, SIGPIPE for one; a shell pipeline in a command
    // relies on the default.
    sigfillset(&signals);
    posix_spawnattr_setsigdefault(&attributes, &signals);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  }
  ~SpawnAttributes() { posix_spawnattr_destroy(&attributes); }
  SpawnAttributes(const SpawnAttributes&) = delete;
  SpawnAttributes& operator=(const SpawnAttributes&) = delete;

  posix_spawnattr_t attributes;
};

class SpawnFiles {
 public:
  SpawnFiles(int standardOutput, int standardError) {
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, standardOutput, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, standardError, STDERR_FILENO);
    // Ours are closed on exec anyway; this also keeps out what the program itself was started with.
    posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
  }
  ~SpawnFiles() { posix_spawn_file_actions_destroy(&actions); }
  SpawnFiles(const SpawnFiles&) = delete;
  SpawnFiles& operator=(const SpawnFiles&) = delete;

  posix_spawn_file_actions_t actions;
};

}  // namespace

ChildProcess::ChildProcess(DescriptorSet& descriptorSet, std::string path,
                           std::vector<std::string> arguments)
    : descriptors(descriptorSet), launchPath(std::move(path)), args(std::move(arguments)) {
  open(output);
  open(error);
}

ChildProcess::~ChildProcess() {
  terminate();
  for (Pipe* pipe : {&output, &error}) {
    close(pipe->readEnd);
    if (pipe->writeEnd >= 0) {
      ::close(pipe->writeEnd);
    }
  }
  close(termination);
}

void ChildProcess::observeTermination(Handler handler) {
  termination.handler = std::move(handler);
}

void ChildProcess::waitForData(Stream stream, Handler handler) {
  Watched& readEnd = pipeOf(stream).readEnd;
  readEnd.handler = std::move(handler);
  descriptors.watch(readEnd.fd, readEnd);
}

void ChildProcess::launch() {
  spawn();
  for (Pipe* pipe : {&output, &error}) {
    ::close(std::exchange(pipe->writeEnd, -1));
  }
  // The C library's own function cannot be linked from C++ everywhere: some versions declare it
  // without extern "C".
  termination.fd = static_cast<int>(syscall(SYS_pidfd_open, pid, 0));
  if (termination.fd < 0) {
    fail(errno);
  }
  descriptors.watch(termination.fd, termination);
}

void ChildProcess::terminate() const {
  if (pid > 0) {
    kill(pid, SIGTERM);
  }
}

void ChildProcess::readAvailable(Stream stream, ByteBuffer& buffer) {
  Pipe& pipe = pipeOf(stream);
  if (!read(pipe, buffer)) {
    close(pipe.readEnd);
  }
}

void ChildProcess::readToEnd(ByteBuffer& outputBytes, ByteBuffer& errorBytes) {
  reap();
  const std::array<std::pair<Pipe*, ByteBuffer*>, 2> streams{
      {{&output, &outputBytes}, {&error, &errorBytes}}};
  while (output.readEnd.fd >= 0 || error.readEnd.fd >= 0) {
    std::array<pollfd, 2> waits{{{.fd = output.readEnd.fd, .events = POLLIN, .revents = 0},
                                 {.fd = error.readEnd.fd, .events = POLLIN, .revents = 0}}};
    poll(waits.data(), waits.size(), -1);
    for (std::size_t i = 0; i < streams.size(); ++i) {
      if (waits[i].revents != 0 && !read(*streams[i].first, *streams[i].second)) {
        close(streams[i].first->readEnd);
      }
    }
  }
}

void ChildProcess::open(Pipe& pipe) const {
  std::array<int, 2> ends;
  if (pipe2(ends.data(), O_CLOEXEC) != 0) {
    fail(errno);
  }
  pipe.readEnd.fd = ends[0];
  pipe.writeEnd = ends[1];
}

// One read, into the buffer's spare room and, what does not fit there, into a block of its own: a
// short output then costs one call and just its own size. Returns false at the end of the stream.
bool ChildProcess::read(Pipe& pipe, ByteBuffer& buffer) {
  static std::array<char, defaultPipeBytes> overflow;
  const std::span<char> spare = buffer.spare();
  const std::array<iovec, 2> parts{{{.iov_base = spare.data(), .iov_len = spare.size()},
                                    {.iov_base = overflow.data(), .iov_len = overflow.size()}}};
  ssize_t count = 0;
  do {
    count = readv(pipe.readEnd.fd, parts.data(), static_cast<int>(parts.size()));
  } while (count < 0 && errno == EINTR);
  if (count < 0) {
    fail(errno);
  }
  const auto bytes = static_cast<std::size_t>(count);
  const std::size_t direct = std::min(bytes, spare.size());
  buffer.commit(direct);
  buffer.append({overflow.data(), bytes - direct});
  if (bytes >= defaultPipeBytes && !pipe.enlarged) {
    // A command that fills its pipe prints a lot: let it run on while others are read. The system
    // may refuse.
    pipe.enlarged = true;
    fcntl(pipe.readEnd.fd, F_SETPIPE_SZ, largePipeBytes);
  }
  return bytes > 0;
}

void ChildProcess::spawn() {
  static const SpawnAttributes spawnAttributes;
  const SpawnFiles files(output.writeEnd, error.writeEnd);
  const Command command = locateCommand(launchPath, args);
  std::vector<char*> argv;
  argv.reserve(command.args.size() + 2);
  argv.push_back(const_cast<char*>(launchPath.c_str()));
  for (const std::string& arg : command.args) {
    argv.push_back(const_cast<char*>(arg.c_str()));
  }
  argv.push_back(nullptr);
  const StartingDescriptorLimit limit;
  const int problem = posix_spawn(&pid, command.path.c_str(), &files.actions,
                                  &spawnAttributes.attributes, argv.data(), environ);
  if (problem != 0) {
    pid = -1;
    fail(problem);
  }
}

void ChildProcess::reap() {
  while (waitpid(pid, nullptr, 0) < 0 && errno == EINTR) {
  }
  pid = -1;
  close(termination);
}

void ChildProcess::close(Watched& watched) {
  if (watched.fd >= 0) {
    descriptors.unwatch(watched.fd, watched);
    ::close(std::exchange(watched.fd, -1));
  }
}

void ChildProcess::fail(int errorNumber) const {
  throw std::system_error(errorNumber, std::generic_category(), "cannot run " + launchPath);
}

}  // namespace platform
