// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include <dlfcn.h>

#include "platform/process/helper_executable.h"

namespace platform {

std::string windowLibraryProblem() {
  // Otherwise the system's loader would end the process with words that name no package.
  return dlopen("libQt6Widgets.so.6", RTLD_LAZY) != nullptr
             ? ""
             : std::string(dlerror()) +
                   "; install the package libqt6widgets6, or use the option "
                   "-s, which runs without one";
}

}  // namespace platform
