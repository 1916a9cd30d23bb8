// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/process/termination_signals.h"

#include <pthread.h>
#include <unistd.h>

#include <array>

#include "text/progress_line.h"

// The signal handler does all of it. The event loop may be blocked when the signal comes, by a slow
// disk or a full pipe. The handler runs in the main thread only, which is the one that changes the
// list, and each change of the list is a single store.

namespace platform {

struct ChildCleanupList {
  static inline std::atomic<ChildCleanup*> first = nullptr;

  static std::atomic<ChildCleanup*>& linkTo(const ChildCleanup& member) {
    return member.previous == nullptr ? first : member.previous->next;
  }

  static void terminateAll() {
    for (const ChildCleanup* member = first; member != nullptr; member = member->next) {
      member->terminate();
    }
  }
};

namespace {

static_assert(std::atomic<ChildCleanup*>::is_always_lock_free);

// libuv ends the program by SIGABRT when the system refuses it a call.
constexpr std::array terminationSignals{SIGABRT, SIGHUP, SIGINT, SIGTERM};

std::atomic<const char*> halfWrittenFile = nullptr;
pthread_t mainThread;

bool isIgnored(int signal) {
  struct sigaction action {};
  return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

void endBy(int signal) {
  struct sigaction action {};
  action.sa_handler = SIG_DFL;
  sigaction(signal, &action, nullptr);
  // It is blocked while its handler runs, and delivered as soon as that has returned.
  raise(signal);
}

extern "C" void cleanUpAndEnd(int signal) {
  if (pthread_equal(pthread_self(), mainThread) == 0) {
    // The system picks any thread, libcurl's resolver for example.
    pthread_kill(mainThread, signal);
    return;
  }
  text::eraseProgressLine();
  ChildCleanupList::terminateAll();
  if (const char* path = halfWrittenFile) {
    unlink(path);
  }
  endBy(signal);
}

sigset_t setOfTerminationSignals() {
  sigset_t set;
  sigemptyset(&set);
  for (const int signal : terminationSignals) {
    sigaddset(&set, signal);
  }
  return set;
}

}  // namespace

void handleTerminationSignals() {
  mainThread = pthread_self();
  struct sigaction action {};
  action.sa_handler = cleanUpAndEnd;
  action.sa_flags = SA_RESTART;
  action.sa_mask = setOfTerminationSignals();
  for (const int signal : terminationSignals) {
    if (!isIgnored(signal)) {
      sigaction(signal, &action, nullptr);
    }
  }
}

bool staysIgnored(int signal) {
  return (signal == SIGHUP || signal == SIGINT || signal == SIGQUIT) && isIgnored(signal);
}

TerminationSignalsBlocked::TerminationSignalsBlocked() {
  const sigset_t held = setOfTerminationSignals();
  pthread_sigmask(SIG_BLOCK, &held, &before);
}

TerminationSignalsBlocked::~TerminationSignalsBlocked() {
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

void ChildCleanup::begin(int child) {
  pid = child;
  next = ChildCleanupList::first.load();
  if (next != nullptr) {
    next.load()->previous = this;
  }
  ChildCleanupList::first = this;
}

void ChildCleanup::end() {
  if (pid < 0) {
    return;
  }
  ChildCleanupList::linkTo(*this) = next.load();
  if (next != nullptr) {
    next.load()->previous = previous;
  }
  previous = nullptr;
  pid = -1;
}

void ChildCleanup::terminate() const {
  if (pid > 0) {
    kill(pid, SIGTERM);
    kill(pid, SIGCONT);
  }
}

FileCleanup::FileCleanup(const char* path) {
  halfWrittenFile = path;
}

FileCleanup::~FileCleanup() {
  halfWrittenFile = nullptr;
}

}  // namespace platform
