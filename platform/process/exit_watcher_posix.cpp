// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include <sys/wait.h>

#include <csignal>
#include <map>
#include <utility>

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
std::map<pid_t, EventLoop::Handler> handlers;
uv_signal_t* listener = nullptr;

void reportExits() {
  pid_t asked = 0;
  // A handler may remove any of them.
  for (auto next = handlers.begin(); next != handlers.end(); next = handlers.upper_bound(asked)) {
    asked = next->first;
    if (hasExited(asked)) {
      guarded(EventLoop::Handler(next->second));
    }
  }
}

void listen(EventLoop& loop) {
  // It may have been blocked since the start of the program.
  sigset_t unblocked;
  sigemptyset(&unblocked);
  sigaddset(&unblocked, SIGCHLD);
  pthread_sigmask(SIG_UNBLOCK, &unblocked, nullptr);
  listener = new uv_signal_t;
  uv_signal_init(loop.handle(), listener);
  uv_signal_start(
      listener, [](uv_signal_t* /*handle*/, int /*number*/) { guarded(reportExits); }, SIGCHLD);
}

}  // namespace

void ExitWatcher::watch(int handle, EventLoop::Handler exited) {
  child = handle;
  if (listener == nullptr) {
    listen(loop);
  }
  handlers[child] = std::move(exited);
  // Its signal may have come before we listened.
  if (hasExited(child)) {
    raise(SIGCHLD);
  }
}

void ExitWatcher::unwatch() {
  if (child >= 0) {
    handlers.erase(std::exchange(child, -1));
    if (handlers.empty()) {
      uv_close(reinterpret_cast<uv_handle_t*>(std::exchange(listener, nullptr)),
               [](uv_handle_t* handle) { delete reinterpret_cast<uv_signal_t*>(handle); });
    }
  }
}

}  // namespace platform
