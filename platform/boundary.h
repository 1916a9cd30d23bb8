// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Where an error that nothing has caught ends. The toolkit's frames must not be crossed by an
// exception, so every way from the main loop into the program leads through enter().

#pragma once

#include <exception>
#include <functional>

namespace platform {

/// What is done with an uncaught error besides logging it. All may be empty.
struct LastMeasures {
  /// Saves a report that has been built and not yet delivered.
  std::function<void()> saveReport;
  /// Asks the commands that still run to end.
  std::function<void()> endCommands;
  /// Shows the error to the person at the window and returns once they have seen it. Empty in a run
  /// without a window.
  std::function<void(const char* reason)> tellUser;
};

/// The measures of this process, to be filled in by whoever can take them.
LastMeasures& lastMeasures();

/// Logs `reason`, takes the last measures and ends the process: with status 1 when a person was
/// told, else by abort. A measure that fails does not keep the next one from being taken.
[[noreturn]] void endAfterUncaughtError(const char* reason);

/// From now on, an error that gets past enter(), such as one in a thread of the toolkit, ends the
/// process in the same way, but by abort: what could tell a person may be in the middle of
/// anything.
void catchUncaughtErrors();

/// Whether the process is about to end after an error. It may still have a loop, that of the
/// message box, which a person reads for as long as they like.
bool isEnding();

/// Runs `work`, also when the process is about to end; an error that it lets out ends the process
/// as told above.
template <class Work>
void takeMeasure(Work&& work) {
  try {
    work();
  } catch (const std::exception& error) {
    endAfterUncaughtError(error.what());
  } catch (...) {
    endAfterUncaughtError("an error without a description");
  }
}

/// The same, but does nothing when the process is about to end: the run has failed, and must not go
/// on behind a message box.
template <class Work>
void enter(Work&& work) {
  if (!isEnding()) {
    takeMeasure(work);
  }
}

}  // namespace platform
