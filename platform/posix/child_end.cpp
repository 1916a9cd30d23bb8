// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/child_end.h"

#include <QCoreApplication>
#include <QPointer>
#include <QSocketNotifier>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <map>
#include <vector>

#include "platform/boundary.h"
#include "platform/pipe.h"

namespace platform {

namespace {

// A window repaints between two turns, even when very many commands end at once.
constexpr std::size_t endsPerTurn = 32;

// Where the signal handler writes to.
int signalPipe = -1;

extern "C" void wakeUpLoop(int /*signal*/) {
  const int before = errno;
  // A pipe that is full already wakes the loop as well.
  while (write(signalPipe, "", 1) < 0 && errno == EINTR) {
  }
  errno = before;
}

// Asks for this one child only, and leaves it uncollected: its number must not pass to a stranger
// before its owner has heard of its end.
bool hasEnded(pid_t pid) {
  siginfo_t facts{};
  return waitid(P_PID, static_cast<id_t>(pid), &facts, WEXITED | WNOHANG | WNOWAIT) != 0 ||
         facts.si_pid == pid;
}

// A signal tells that some child has ended, through a pipe that the loop watches. One signal may
// stand for many ends, so all children are looked at then.
class Children {
 public:
  static Children& ours() {
    static Children children;
    return children;
  }

  bool watch(pid_t pid, DescriptorWatcher& watcher) {
    if (!listen()) {
      return false;
    }
    watchers[pid] = &watcher;
    // The signal of one that ended before may have come and gone.
    if (hasEnded(pid)) {
      wakeUpLoop(SIGCHLD);
    }
    return true;
  }

  void unwatch(pid_t pid, const DescriptorWatcher* watcher) {
    const auto known = watchers.find(pid);
    if (known != watchers.end() && known->second == watcher) {
      watchers.erase(known);
    }
  }

 private:
  bool listen() {
    if (signalPipe < 0 && !catchSignals()) {
      return false;
    }
    // Whoever started the program may have blocked the signal.
    sigset_t unblocked;
    sigemptyset(&unblocked);
    sigaddset(&unblocked, SIGCHLD);
    pthread_sigmask(SIG_UNBLOCK, &unblocked, nullptr);
    if (notifier.isNull()) {
      notifier = new QSocketNotifier(readEnd, QSocketNotifier::Read, QCoreApplication::instance());
      QObject::connect(notifier, &QSocketNotifier::activated, notifier, [this] {
        // Nobody empties the pipe any more, which would keep the loop of a message box busy.
        notifier->setEnabled(!isEnding());
        enter([this] { tellOfEnds(); });
      });
    }
    return true;
  }

  bool catchSignals() {
    std::array<int, 2> ends;
    if (!openPipe(ends)) {
      return false;
    }
    // Neither may the handler wait for room, nor the loop for more when it has taken what is there.
    if (fcntl(ends[0], F_SETFL, O_NONBLOCK) != 0 || fcntl(ends[1], F_SETFL, O_NONBLOCK) != 0) {
      const int problem = errno;
      close(ends[0]);
      close(ends[1]);
      errno = problem;
      return false;
    }
    readEnd = ends[0];
    signalPipe = ends[1];
    struct sigaction action {};
    action.sa_handler = wakeUpLoop;
    action.sa_flags = SA_RESTART | SA_NOCLDSTOP;
    sigaction(SIGCHLD, &action, nullptr);
    return true;
  }

  void tellOfEnds() {
    // Emptied first: an end that comes from here on wakes the loop again.
    std::array<char, 256> bytes;
    while (read(readEnd, bytes.data(), bytes.size()) > 0) {
    }
    for (const pid_t pid : someEnded()) {
      // What is told of one may end the watch of another.
      const auto known = watchers.find(pid);
      if (known != watchers.end()) {
        DescriptorWatcher& watcher = *known->second;
        watchers.erase(known);
        watcher.descriptorReady();
      }
    }
  }

  std::vector<pid_t> someEnded() const {
    std::vector<pid_t> ended;
    for (const auto& [pid, watcher] : watchers) {
      if (ended.size() == endsPerTurn) {
        wakeUpLoop(SIGCHLD);
        break;
      }
      if (hasEnded(pid)) {
        ended.push_back(pid);
      }
    }
    return ended;
  }

  int readEnd = -1;
  // The application's, and gone with it.
  QPointer<QSocketNotifier> notifier;
  std::map<pid_t, DescriptorWatcher*> watchers;
};

}  // namespace

// The child is known by its process number.

bool ChildEnd::watch(int spawned, DescriptorWatcher& ended) {
  if (!Children::ours().watch(spawned, ended)) {
    return false;
  }
  child = spawned;
  watcher = &ended;
  return true;
}

void ChildEnd::unwatch() {
  if (child >= 0) {
    Children::ours().unwatch(child, watcher);
    child = -1;
  }
}

}  // namespace platform
