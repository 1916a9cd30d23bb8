// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The one event loop of the test process.

#pragma once

#include "platform/desktop/desktop.h"
#include "platform/event_loop/event_loop.h"

namespace support {

/// Made before the first test.
platform::EventLoop& eventLoop();

/// Waits for the next events and handles them; in the tests with windows, those of Qt as well.
void turn();

/// The user's desktop, in the tests with windows.
platform::Desktop& desktop();

/// Turns the event loop until `done` is true. Only the test's own time limit ends a wait that
/// nothing fulfils.
template <class Condition>
void turnUntil(Condition&& done) {
  while (!done()) {
    turn();
  }
}

}  // namespace support
