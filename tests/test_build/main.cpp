// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The whole program with other commands in place of the plan's and another submission endpoint, so
// that it can be run and measured on any machine without a packet leaving it. Driven by the
// environment:
//   TEST_BUILD_COMMANDS    a file of shell command lines: the n-th test of the plan runs the n-th
//   line, or nothing at all
//                        where there is no such line
//   TEST_BUILD_SUBMIT_URL  where the report is uploaded to
//   TEST_BUILD_STALL_MS    how long an upload may make no progress, in milliseconds

#include <cstdlib>
#include <fstream>

#include "app/windowed_run.h"

namespace {

std::string setting(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

diagnostics::Endpoints testEndpoints() {
  diagnostics::Endpoints endpoints = diagnostics::builtInEndpoints();
  endpoints.submitUrl = setting("TEST_BUILD_SUBMIT_URL");
  return endpoints;
}

class TestBuildController final : public app::MainController {
 public:
  explicit TestBuildController(platform::EventLoop& eventLoop)
      : MainController(eventLoop, testEndpoints()) {
    if (const std::string path = setting("TEST_BUILD_COMMANDS"); !path.empty()) {
      // A read error must not look like the end of the commands.
      lines.exceptions(std::ios::badbit | std::ios::failbit);
      lines.open(path);
      lines.exceptions(std::ios::badbit);
    }
    if (const std::string limit = setting("TEST_BUILD_STALL_MS"); !limit.empty()) {
      stallLimit = std::chrono::milliseconds(std::stoi(limit));
    }
  }

  using MainController::startTest;
  void startTest(const std::string& /*launchPath*/, const std::vector<std::string>& /*args*/,
                 const Text& comment) override {
    std::string line;
    std::getline(lines, line);
    MainController::startTest("/bin/sh", {"-c", line.empty() ? ":" : line}, comment);
  }

 private:
  std::ifstream lines;
};

std::unique_ptr<app::MainController> makeController(platform::EventLoop& loop) {
  return std::make_unique<TestBuildController>(loop);
}

}  // namespace

int main(int argc, char** argv) {
  return app::runProgram(argc, argv, makeController, app::runWindowed);
}
