// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/boundary.h"

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <string>
#include <utility>

#include "platform/log.h"

namespace platform {

namespace {

bool hasFailed = false;

// Given back when there may be no other memory to say so, and to save a report, with.
constexpr std::size_t reservedBytes = 64UL * 1024;
std::unique_ptr<char[]> reserve(new char[reservedBytes]);

}  // namespace

bool isEnding() {
  return hasFailed;
}

LastMeasures& lastMeasures() {
  static LastMeasures measures;
  return measures;
}

void endAfterUncaughtError(const char* reason) {
  hasFailed = true;
  reserve.reset();
  log(std::string("the program ends after an error: ") + reason);
  // Taken out before it is used: should it fail, the error that comes here again goes on with the
  // next.
  if (const auto saveReport = std::exchange(lastMeasures().saveReport, {})) {
    takeMeasure(saveReport);
  }
  if (const auto endCommands = std::exchange(lastMeasures().endCommands, {})) {
    takeMeasure(endCommands);
  }
  if (const auto tellUser = std::exchange(lastMeasures().tellUser, {})) {
    takeMeasure([&] { tellUser(reason); });
    std::_Exit(EXIT_FAILURE);
  }
  std::abort();
}

void catchUncaughtErrors() {
  std::set_terminate([] {
    lastMeasures().tellUser = nullptr;
    takeMeasure([] {
      if (const std::exception_ptr error = std::current_exception()) {
        std::rethrow_exception(error);
      }
    });
    endAfterUncaughtError("the program was terminated");
  });
}

}  // namespace platform
