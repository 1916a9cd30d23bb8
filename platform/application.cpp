// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/application.h"

#include <cstdlib>

namespace platform {

void Application::setDelegate(ApplicationDelegate& /*delegate*/) {}

void Application::exit(int status) {
  // Not std::exit: threads that look up names may still be at work, and nothing of ours waits to be
  // written.
  std::_Exit(status);
}

}  // namespace platform
