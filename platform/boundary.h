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
/// told, else by abort.
[[noreturn]] void endAfterUncaughtError(const char* reason);

/// Runs `work`; an error that it lets out ends the process as told above.
template <class Work>
void enter(Work&& work) {
  try {
    work();
  } catch (const std::exception& error) {
    endAfterUncaughtError(error.what());
  } catch (...) {
    endAfterUncaughtError("an error without a description");
  }
}

}  // namespace platform
