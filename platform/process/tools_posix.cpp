// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/process/tools.h"

namespace platform {

Command locateCommand(const std::string& path, const std::vector<std::string>& args) {
  // The plan names its tools by the places where macOS keeps them.
  return {.path = path, .args = args};
}

}  // namespace platform
