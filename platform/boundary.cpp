// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/boundary.h"

#include <cstdlib>
#include <string>
#include <utility>

#include "platform/log.h"

namespace platform {

namespace {

bool hasFailed = false;

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
  log(std::string("the program ends after an error: ") + reason);
  // Taken out before they are used: should one of them fail, the error that comes here again finds
  // nothing to repeat.
  const LastMeasures measures = std::exchange(lastMeasures(), {});
  if (measures.saveReport) {
    takeMeasure(measures.saveReport);
  }
  if (measures.endCommands) {
    takeMeasure(measures.endCommands);
  }
  if (measures.tellUser) {
    takeMeasure([&] { measures.tellUser(reason); });
    std::_Exit(EXIT_FAILURE);
  }
  std::abort();
}

}  // namespace platform
