// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/ending_signals.h"

#include <pthread.h>
#include <unistd.h>

#include <array>

// Nothing of this goes through the main loop, which may wait for a descendant of a command, a slow
// disk or a full pipe when the signal comes: the handler does it all. It runs in the main thread
// only, the one that changes what it looks at, and each change is a single store.

namespace platform {

struct EndedAlongList {
  static inline std::atomic<EndedAlong*> first = nullptr;

  static std::atomic<EndedAlong*>& linkTo(const EndedAlong& member) {
    return member.previous == nullptr ? first : member.previous->next;
  }

  static void terminateAll() {
    for (const EndedAlong* member = first; member != nullptr; member = member->next) {
      member->terminate();
    }
  }
};

namespace {

static_assert(std::atomic<EndedAlong*>::is_always_lock_free);

constexpr std::array endingSignals{SIGHUP, SIGINT, SIGTERM};

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
  // It is blocked while its handler runs, and strikes as soon as that has returned.
  raise(signal);
}

extern "C" void clearUpAndEnd(int signal) {
  if (pthread_equal(pthread_self(), mainThread) == 0) {
    // The system picks any thread, one that looks up a name for example.
    pthread_kill(mainThread, signal);
    return;
  }
  EndedAlongList::terminateAll();
  if (const char* path = halfWrittenFile) {
    unlink(path);
  }
  endBy(signal);
}

sigset_t setOfEndingSignals() {
  sigset_t set;
  sigemptyset(&set);
  for (const int signal : endingSignals) {
    sigaddset(&set, signal);
  }
  return set;
}

}  // namespace

void catchEndingSignals() {
  mainThread = pthread_self();
  struct sigaction action {};
  action.sa_handler = clearUpAndEnd;
  action.sa_flags = SA_RESTART;
  action.sa_mask = setOfEndingSignals();
  for (const int signal : endingSignals) {
    if (!isIgnored(signal)) {
      sigaction(signal, &action, nullptr);
    }
  }
}

bool staysIgnored(int signal) {
  return (signal == SIGHUP || signal == SIGINT || signal == SIGQUIT) && isIgnored(signal);
}

EndingSignalsHeld::EndingSignalsHeld() {
  const sigset_t held = setOfEndingSignals();
  pthread_sigmask(SIG_BLOCK, &held, &before);
}

EndingSignalsHeld::~EndingSignalsHeld() {
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

void EndedAlong::begin(int child) {
  pid = child;
  next = EndedAlongList::first.load();
  if (next != nullptr) {
    next.load()->previous = this;
  }
  EndedAlongList::first = this;
}

void EndedAlong::end() {
  if (pid < 0) {
    return;
  }
  EndedAlongList::linkTo(*this) = next.load();
  if (next != nullptr) {
    next.load()->previous = previous;
  }
  previous = nullptr;
  pid = -1;
}

void EndedAlong::terminate() const {
  if (pid > 0) {
    kill(pid, SIGTERM);
    // What is stopped would take notice only when somebody continues it.
    kill(pid, SIGCONT);
  }
}

RemovedAlong::RemovedAlong(const char* path) {
  halfWrittenFile = path;
}

RemovedAlong::~RemovedAlong() {
  halfWrittenFile = nullptr;
}

}  // namespace platform
