// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// What a termination signal (SIGHUP, SIGINT, SIGTERM, SIGABRT) cleans up before it ends the
// program: the commands that still run, and a file that is only half written. Main thread only.

#pragma once

#include <atomic>
#include <csignal>

namespace platform {

/// From here on a termination signal first cleans up, at any moment and whatever the program waits
/// for, and then ends it by its default action, so that its parent sees which signal it was. One
/// that was ignored when the program was started stays ignored. A second call does nothing more.
void handleTerminationSignals();

/// Whether `signal` is one that a terminal sends to its foreground processes, and it was ignored
/// when the program was started, by `nohup` for example. The commands then ignore it too: in a run
/// that outlives its terminal, they have to as well. It is async-signal-safe.
bool staysIgnored(int signal);

/// While it lives, the termination signals are blocked.
class TerminationSignalsBlocked {
 public:
  TerminationSignalsBlocked();
  ~TerminationSignalsBlocked();
  TerminationSignalsBlocked(const TerminationSignalsBlocked&) = delete;
  TerminationSignalsBlocked& operator=(const TerminationSignalsBlocked&) = delete;

 private:
  sigset_t before;
};

/// Has a termination signal sent on to a child process, from begin() to end().
class ChildCleanup {
 public:
  ChildCleanup() = default;
  ~ChildCleanup() { end(); }
  ChildCleanup(const ChildCleanup&) = delete;
  ChildCleanup& operator=(const ChildCleanup&) = delete;

  /// To be called while the termination signals are blocked, before the child is reaped.
  void begin(int child);

  /// To be called before the child is reaped, since another process may get its number then.
  void end();

  /// Sends the child SIGTERM, and SIGCONT in case it is stopped. Does nothing outside of begin()
  /// and end(). It is async-signal-safe.
  void terminate() const;

 private:
  friend struct ChildCleanupList;

  int pid = -1;
  std::atomic<ChildCleanup*> next = nullptr;
  ChildCleanup* previous = nullptr;
};

/// Has a termination signal remove a file, if it is there, while this lives. One at a time.
class FileCleanup {
 public:
  /// `path` must outlive it.
  explicit FileCleanup(const char* path);
  ~FileCleanup();
  FileCleanup(const FileCleanup&) = delete;
  FileCleanup& operator=(const FileCleanup&) = delete;
};

}  // namespace platform
