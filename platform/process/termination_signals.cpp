// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/process/termination_signals.h"

#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <unordered_set>

#include "text/log.h"

// The signal handler does all of it, as a slow disk or a full pipe may block the event loop. It
// runs in the main thread only, which changes the set of children with signals blocked.

namespace platform {

namespace {

// libuv ends the program by SIGABRT when the system refuses it a call.
constexpr std::array terminationSignals{SIGABRT, SIGHUP, SIGINT, SIGTERM};

// Never destroyed, as a signal may come while the program exits.
std::unordered_set<int>& children = *new std::unordered_set<int>;
std::atomic<const char*> halfWrittenFile = nullptr;
pthread_t mainThread;

bool isIgnored(int signal) {
  struct sigaction action{};
  return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

extern "C" void cleanUpAndEnd(int signal) {
  if (pthread_equal(pthread_self(), mainThread) == 0) {
    // The system picks any thread, libcurl's resolver for example.
    pthread_kill(mainThread, signal);
    return;
  }
  text::eraseProgressLine();
  std::for_each(children.begin(), children.end(), terminateChild);
  if (const char* path = halfWrittenFile) {
    unlink(path);
  }
  std::signal(signal, SIG_DFL);
  sigset_t handled;
  sigemptyset(&handled);
  sigaddset(&handled, signal);
  pthread_sigmask(SIG_UNBLOCK, &handled, nullptr);
  raise(signal);
  // The first process of a container is not ended by it.
  _exit(128 + signal);
}

}  // namespace

void handleTerminationSignals() {
  mainThread = pthread_self();
  struct sigaction action{};
  action.sa_handler = cleanUpAndEnd;
  action.sa_flags = SA_RESTART;
  sigfillset(&action.sa_mask);
  for (const int signal : terminationSignals) {
    if (!isIgnored(signal)) {
      sigaction(signal, &action, nullptr);
    }
  }
}

bool staysIgnored(int signal) {
  return (signal == SIGHUP || signal == SIGINT || signal == SIGQUIT) && isIgnored(signal);
}

SignalsBlocked::SignalsBlocked() {
  sigset_t all;
  sigfillset(&all);
  pthread_sigmask(SIG_BLOCK, &all, &before);
}

SignalsBlocked::~SignalsBlocked() {
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

void addChild(int pid) {
  children.insert(pid);
}

void removeChild(int pid) {
  const SignalsBlocked untilTheSetIsWhole;
  children.erase(pid);
}

void terminateChild(int pid) {
  kill(pid, SIGTERM);
  kill(pid, SIGCONT);
}

FileCleanup::FileCleanup(const char* path) {
  halfWrittenFile = path;
}

FileCleanup::~FileCleanup() {
  halfWrittenFile = nullptr;
}

}  // namespace platform
