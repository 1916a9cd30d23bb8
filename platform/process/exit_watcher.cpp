// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/process/exit_watcher.h"

#include <sys/wait.h>

#include <csignal>
#include <map>
#include <utility>

#include "platform/event_loop/fatal_error.h"

namespace platform {

namespace {

std::map<pid_t, EventLoop::Handler> handlers;
uv_signal_t* listener = nullptr;

// The number of a child that has exited, 0 if there is none, -1 on error. Does not reap it: until
// its owner knows that it has exited, nobody else may get its number.
pid_t exitedChild(idtype_t type, pid_t pid) {
  siginfo_t info{};
  const int result = waitid(type, static_cast<id_t>(pid), &info, WEXITED | WNOHANG | WNOWAIT);
  return result == 0 ? info.si_pid : -1;
}

// SIGCHLD says that some child has exited, and one signal may stand for several. Asking for any of
// them is one call, however many are running.
void reportExits() {
  pid_t exited = exitedChild(P_ALL, 0);
  for (pid_t last = 0; exited != last && handlers.contains(exited);) {
    // A copy, since the handler may end the watch.
    guarded(EventLoop::Handler(handlers[exited]));
    last = std::exchange(exited, exitedChild(P_ALL, 0));
  }
  // One that is not watched, or not reaped: the system would name it again and again.
  if (exited != 0) {
    for (const auto& [pid, handler] : std::map(handlers)) {
      if (handlers.contains(pid) && exitedChild(P_PID, pid) != 0) {
        guarded(handler);
      }
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
  // The first child may have exited before.
  raise(SIGCHLD);
}

}  // namespace

void ExitWatcher::watch(int pid, EventLoop::Handler exited) {
  child = pid;
  handlers[child] = std::move(exited);
  if (listener == nullptr) {
    listen(loop);
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
