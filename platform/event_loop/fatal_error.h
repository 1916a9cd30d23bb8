// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The fatal-error handler: where an exception that nothing has caught ends. No exception may cross
// the C code of libuv or the frames of Qt, so every callback of theirs runs its work in guarded().

#pragma once

#include <functional>

namespace platform {

/// What a fatal error does besides logging itself. Any of them may be empty.
struct FatalErrorHooks {
  /// Saves a report that has been built and not yet delivered.
  std::function<void()> saveReport;
  /// Asks the commands that still run to end.
  std::function<void()> endCommands;
  /// Shows the error in the window and returns once it has been read. Empty without a window.
  std::function<void(const char* reason)> showError;
};

/// The hooks of this process.
FatalErrorHooks& onFatalError();

/// Logs `reason`, calls the hooks and ends the process: with status 1 if the error was shown, else
/// by abort. A hook that throws does not keep the next one from being called.
[[noreturn]] void fatalError(const char* reason);

/// The same with the text of the exception that is being handled; to be called in a catch clause.
[[noreturn]] void fatalErrorFromException();

/// Makes an exception that escapes guarded() a fatal error too. It then ends by abort, as Qt may be
/// in the middle of anything and cannot show it.
void installTerminateHandler();

/// Whether the process is ending after a fatal error. Qt's loop may still run, for the message box.
bool hasFatalError();

/// Runs `work` and makes an exception that it throws a fatal error. Does nothing once there has
/// been one: the run must not go on behind the message box.
template <class Work>
void guarded(Work&& work) {
  if (hasFatalError()) {
    return;
  }
  try {
    work();
  } catch (...) {
    fatalErrorFromException();
  }
}

}  // namespace platform
