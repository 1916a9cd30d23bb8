// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The program that users call. To open a window it goes on as another one: loading the toolkit's
// widgets takes longer than all else that a run without a window does before its first command.

#include <cstdlib>
#include <cstring>
#include <string>

#include "app/entry.h"
#include "platform/companion.h"
#include "platform/log.h"

namespace {

int becomeWindow(int& argc, char** argv, const app::ControllerFactory& /*makeController*/) {
  const int problem = platform::becomeCompanion("halvik-diagnostic-window", argc, argv);
  platform::log(std::string("cannot open the window: ") + std::strerror(problem) +
                "; the option -s runs without one");
  return EXIT_FAILURE;
}

}  // namespace

int main(int argc, char** argv) {
  return app::runProgram(argc, argv, app::makeMainController, becomeWindow);
}
