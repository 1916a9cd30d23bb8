// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// What a termination signal (SIGHUP, SIGINT, SIGTERM, SIGABRT) cleans up before it ends the
// program: the commands that still run, and a file that is only half written. Main thread only.

#pragma once

#include <csignal>

namespace platform {

/// From here on a termination signal, unless it was ignored when the program was started, first
/// cleans up and then ends the program by its default action. A second call does nothing more.
void handleTerminationSignals();

/// Whether `signal` is one that a terminal sends, and it was ignored when the program was started,
/// as by `nohup`; async-signal-safe. The commands then ignore it too, to outlive the terminal.
bool staysIgnored(int signal);

/// While it lives, no signal handler runs in this thread.
class SignalsBlocked {
 public:
  SignalsBlocked();
  ~SignalsBlocked();
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;

 private:
  sigset_t before;
};

/// From here on a termination signal also ends the child process `pid`. To be called with
/// SignalsBlocked since before the child was started.
void addChild(int pid);

/// To be called before the child is reaped, since another process may get its number then.
void removeChild(int pid);

/// Sends the child SIGTERM, and SIGCONT in case it is stopped. It is async-signal-safe.
void terminateChild(int pid);

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
