// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/event_loop/fatal_error.h"

#include <cstddef>
#include <cstdlib>
#include <exception>
#include <memory>
#include <string>
#include <utility>

#include "text/log.h"

namespace platform {

namespace {

bool hasFailed = false;

// Freed on a fatal error, so that there is memory to log it and to save the report.
constexpr std::size_t reservedBytes = 64UL * 1024;
std::unique_ptr<char[]> reserve(new char[reservedBytes]);

// A hook is removed before it is called: if it throws, the fatal error that follows goes on with
// the next one.
template <class... Arguments>
bool callOnce(std::function<void(Arguments...)>& hook, Arguments... arguments) {
  const auto called = std::exchange(hook, {});
  if (called) {
    try {
      called(arguments...);
    } catch (...) {
      fatalErrorFromException();
    }
  }
  return static_cast<bool>(called);
}

}  // namespace

bool hasFatalError() {
  return hasFailed;
}

FatalErrorHooks& onFatalError() {
  static FatalErrorHooks hooks;
  return hooks;
}

void fatalError(const char* reason) {
  hasFailed = true;
  reserve.reset();
  text::log(std::string("the program ends after an error: ") + reason);
  callOnce(onFatalError().saveReport);
  callOnce(onFatalError().endCommands);
  if (callOnce(onFatalError().showError, reason)) {
    std::_Exit(EXIT_FAILURE);
  }
  std::abort();
}

void fatalErrorFromException() {
  try {
    throw;
  } catch (const std::exception& error) {
    fatalError(error.what());
  } catch (...) {
    fatalError("an error without a description");
  }
}

void installTerminateHandler() {
  std::set_terminate([] {
    onFatalError().showError = nullptr;
    if (std::current_exception()) {
      fatalErrorFromException();
    }
    fatalError("the program was terminated");
  });
}

}  // namespace platform
