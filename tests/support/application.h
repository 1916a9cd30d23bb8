// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The one application of the test process.

#pragma once

#include "platform/application.h"
#include "platform/desktop.h"

namespace support {

/// A headless application, made before the first test.
platform::Application& application();

/// What the user's desktop does, in the tests with windows.
platform::Desktop& desktop();

/// Turns the main loop until `done` is true. Only the test's own time limit ends a wait that
/// nothing fulfils.
template <class Condition>
void turnUntil(Condition&& done) {
  while (!done()) {
    application().turn();
  }
}

}  // namespace support
