// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// What a signal that ends the program takes along: the commands that still run, and a file that is
// only half written. Main thread only.

#pragma once

#include <atomic>
#include <csignal>

namespace platform {

/// From here on the signals by which people, scripts and desktops end a program (SIGHUP, SIGINT and
/// SIGTERM) first clear up, at any moment and whatever the program waits for, and then end it as
/// they always do, so that whoever waits for it sees which one it was. One that the program was
/// started to ignore stays ignored. A second call does nothing more.
void catchEndingSignals();

/// Whether `signal` is one that a terminal sends to everyone in front of it, and the program was
/// started to ignore it: its commands have to as well, or a run that outlives its terminal would
/// report on commands that did not. It is async-signal-safe.
bool staysIgnored(int signal);

/// While it lives, the ending signals wait.
class EndingSignalsHeld {
 public:
  EndingSignalsHeld();
  ~EndingSignalsHeld();
  EndingSignalsHeld(const EndingSignalsHeld&) = delete;
  EndingSignalsHeld& operator=(const EndingSignalsHeld&) = delete;

 private:
  sigset_t before;
};

/// A child process that an ending signal asks to end, from begin() to end().
class EndedAlong {
 public:
  EndedAlong() = default;
  ~EndedAlong() { end(); }
  EndedAlong(const EndedAlong&) = delete;
  EndedAlong& operator=(const EndedAlong&) = delete;

  /// To be called before an ending signal can arrive, with the child not collected.
  void begin(int child);

  /// To be called before the child is collected, since its number may then pass to a stranger.
  void end();

  /// Asks the child to end now, also one that is stopped. Does nothing outside of begin() and
  /// end(). It is async-signal-safe.
  void terminate() const;

 private:
  friend struct EndedAlongList;

  int pid = -1;
  std::atomic<EndedAlong*> next = nullptr;
  EndedAlong* previous = nullptr;
};

/// A file that an ending signal removes, while this lives, if it is there. There is one at most.
class RemovedAlong {
 public:
  /// `path` must outlive it.
  explicit RemovedAlong(const char* path);
  ~RemovedAlong();
  RemovedAlong(const RemovedAlong&) = delete;
  RemovedAlong& operator=(const RemovedAlong&) = delete;
};

}  // namespace platform
