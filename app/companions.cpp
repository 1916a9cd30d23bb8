// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "app/companions.h"

#include <cstdlib>
#include <cstring>
#include <string>

#include "platform/companion.h"
#include "platform/log.h"

namespace app {

void becomeUploader(char* const* argv) {
  const int problem = platform::becomeCompanion("halvik-diagnostic-upload", argv);
  platform::log(std::string("cannot upload: ") + std::strerror(problem) +
                "; the options -c and -o= deliver the report without it");
  std::exit(EXIT_FAILURE);
}

int becomeWindow(int& /*argc*/, char** argv, const ControllerFactory& /*makeController*/) {
  const int problem = platform::becomeCompanion("halvik-diagnostic-window", argv);
  platform::log(std::string("cannot open the window: ") + std::strerror(problem) +
                "; the option -s runs without one");
  return EXIT_FAILURE;
}

}  // namespace app
