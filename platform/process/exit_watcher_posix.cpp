// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include <sys/wait.h>

#include <csignal>
#include <map>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/event_loop/fatal_error.h"
#include "platform/process/exit_watcher.h"

namespace platform {

namespace {

// Does not reap the child: until its owner knows that it has exited, nobody else may get its
// number.
bool hasExited(pid_t pid) {
  siginfo_t info{};
  return waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOHANG | WNOWAIT) != 0 ||
         info.si_pid == pid;
}

// SIGCHLD says that some child has exited, and one signal may stand for several, so each watched
// child is asked.
class Children {
 public:
  static Children& instance() {
    static Children children;
    return children;
  }

  void add(EventLoop& loop, pid_t pid, EventLoop::Handler exited) {
    if (signal == nullptr) {
      listen(loop);
    }
    handlers[pid] = std::move(exited);
    // Its signal may have come before we listened.
    if (hasExited(pid)) {
      raise(SIGCHLD);
    }
  }

  void remove(pid_t pid) {
    handlers.erase(pid);
    if (handlers.empty() && signal != nullptr) {
      uv_close(reinterpret_cast<uv_handle_t*>(std::exchange(signal, nullptr)),
               [](uv_handle_t* handle) { delete reinterpret_cast<uv_signal_t*>(handle); });
    }
  }

 private:
  void listen(EventLoop& loop) {
    // It may have been blocked since the start of the program.
    sigset_t unblocked;
    sigemptyset(&unblocked);
    sigaddset(&unblocked, SIGCHLD);
    pthread_sigmask(SIG_UNBLOCK, &unblocked, nullptr);
    signal = new uv_signal_t;
    uv_signal_init(loop.handle(), signal);
    const int result = uv_signal_start(
        signal,
        [](uv_signal_t* /*handle*/, int /*number*/) { guarded([] { instance().reportExits(); }); },
        SIGCHLD);
    if (result < 0) {
      throw std::system_error(-result, std::generic_category(), "cannot listen for SIGCHLD");
    }
  }

  void reportExits() {
    std::vector<pid_t> exited;
    for (const auto& [pid, handler] : handlers) {
      if (hasExited(pid)) {
        exited.push_back(pid);
      }
    }
    for (const pid_t pid : exited) {
      // An earlier handler may have removed it.
      const auto known = handlers.find(pid);
      if (known != handlers.end()) {
        guarded(EventLoop::Handler(known->second));
      }
    }
  }

  uv_signal_t* signal = nullptr;
  std::map<pid_t, EventLoop::Handler> handlers;
};

}  // namespace

void ExitWatcher::watch(int handle, EventLoop::Handler exited) {
  child = handle;
  Children::instance().add(loop, child, std::move(exited));
}

void ExitWatcher::unwatch() {
  if (child >= 0) {
    Children::instance().remove(std::exchange(child, -1));
  }
}

}  // namespace platform
