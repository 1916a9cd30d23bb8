// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/headless_application.h"

#include "platform/toolkit_application.h"

namespace platform {

std::unique_ptr<Application> makeHeadlessApplication(int& argc, char** argv) {
  return std::make_unique<ToolkitApplication>(argc, argv);
}

}  // namespace platform
