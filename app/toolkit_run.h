// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// A run without a window that has all of the toolkit.

#pragma once

#include <memory>

#include "platform/toolkit_application.h"

namespace app {

/// An application for any run without a window.
inline std::unique_ptr<platform::Application> makeToolkitApplication(int& argc, char** argv,
                                                                     bool /*willUpload*/) {
  return std::make_unique<platform::ToolkitApplication>(argc, argv);
}

}  // namespace app
