// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/process/helper_executable.h"

namespace platform {

std::string windowLibraryProblem() {
  return "";
}

}  // namespace platform
