// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The whole program with exactly the commands of a benchmark in place of the plan's. Driven by the
// environment, by one of:
//   BENCH_COMMANDS  a file of shell command lines, each run by a shell of its own
//   BENCH_LOGS      a folder, name ending in "/", whose files are read as the Skivra's logs are
// With neither, it ends where the first command would be launched. Like the program, it goes on as
// another one to send its report; BENCH_UPLOAD is defined for that.

#include <cstdlib>
#include <fstream>

#include "app/entry.h"
#ifdef BENCH_UPLOAD
#include "app/toolkit_run.h"
#else
#include "platform/process/helper_executable.h"
#include "platform/headless_application.h"
#endif

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

#ifdef BENCH_UPLOAD
constexpr auto makeApplication = app::makeToolkitApplication;
#else
std::unique_ptr<platform::Application> makeApplication(int& argc, char** argv, bool willUpload) {
  if (willUpload) {
    platform::executeHelper("bench_diagnostic_upload", argv);
    std::exit(EXIT_FAILURE);
  }
  return platform::makeHeadlessApplication(argc, argv);
}
#endif

int runWindowed(int& /*argc*/, char** /*argv*/, const app::ControllerFactory& /*makeController*/) {
  return EXIT_FAILURE;
}

}  // namespace

int main(int argc, char** argv) {
  const app::ControllerFactory makeController = [](platform::Application& application) {
    return std::make_unique<BenchController>(application);
  };
  return app::runProgram(argc, argv, makeController,
                         {.makeApplication = makeApplication, .runWindowed = runWindowed});
}
