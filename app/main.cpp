// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The program that users call. For a window it executes another one in its place, as the libraries
// of the window take longer to load than everything else that a run does before its first command.

#include <cstdlib>
#include <cstring>
#include <string>

#include "app/entry.h"
#include "platform/process/helper_executable.h"
#include "text/log.h"

namespace {

// Returns, with the exit status, only if that fails.
int executeWindow(int& /*argc*/, char** argv, const app::ControllerFactory& /*makeController*/) {
  std::string problem = platform::windowLibraryProblem();
  if (problem.empty()) {
    problem = std::strerror(platform::executeHelper("halvik-diagnostic-window", argv));
  }
  text::log("cannot open the window: " + problem + "; the option -s runs without one");
  return EXIT_FAILURE;
}

}  // namespace

int main(int argc, char** argv) {
  return app::runProgram(argc, argv, app::makeMainController, executeWindow);
}
