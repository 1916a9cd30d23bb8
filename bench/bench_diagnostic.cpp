// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The whole program with exactly the commands of a benchmark in place of the plan's. Driven by the
// environment, by one of:
//   BENCH_COMMANDS  a file of shell command lines, each run by a shell of its own
//   BENCH_LOGS      a folder, name ending in "/", whose files are read as the Skivra's logs are
// With neither, it ends where the first command would be launched.

#include <cstdlib>
#include <fstream>

#include "app/entry.h"

namespace {

class BenchController final : public app::MainController {
 public:
  using MainController::MainController;

  using MainController::startTest;
  void startTest(const std::string& launchPath, const std::vector<std::string>& args,
                 const Text& comment) override {
    if (isStarting) {
      MainController::startTest(launchPath, args, comment);
    } else if (!hasStarted) {
      hasStarted = true;
      isStarting = true;
      startAll();
      isStarting = false;
    }
  }

 private:
  void startAll() {
    if (const char* file = std::getenv("BENCH_COMMANDS")) {
      std::ifstream lines(file);
      for (std::string line; std::getline(lines, line);) {
        startTest("/bin/sh", {"-c", line}, std::nullopt);
      }
    } else if (const char* folder = std::getenv("BENCH_LOGS")) {
      tailBeaconSubfolderLog(folder);
    } else {
      std::_Exit(EXIT_SUCCESS);
    }
  }

  bool hasStarted = false;
  bool isStarting = false;
};

int runWindowed(int& /*argc*/, char** /*argv*/, const app::ControllerFactory& /*makeController*/) {
  return EXIT_FAILURE;
}

}  // namespace

int main(int argc, char** argv) {
  const app::ControllerFactory makeController = [](platform::EventLoop& loop) {
    return std::make_unique<BenchController>(loop);
  };
  return app::runProgram(argc, argv, makeController, runWindowed);
}
