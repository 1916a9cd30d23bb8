// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Controllers and processes for tests.

#pragma once

#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "app/main_controller.h"
#include "support/event_loop.h"

namespace support {

/// A test as the plan asks for it.
struct PlannedTest {
  std::string launchPath;
  std::vector<std::string> args;
  std::optional<std::string> comment;
  bool operator==(const PlannedTest&) const = default;
};

inline void PrintTo(const PlannedTest& test, std::ostream* out) {
  *out << test.launchPath;
  for (const std::string& arg : test.args) {
    *out << " [" << arg << ']';
  }
  if (test.comment) {
    *out << " comment [" << *test.comment << ']';
  }
}

/// A controller that records the plan, and runs a command that ends at once in place of each test.
class RecordingController final : public app::MainController {
 public:
  explicit RecordingController(
      const diagnostics::Endpoints& asked = diagnostics::builtInEndpoints())
      : MainController(support::eventLoop(), asked) {}

  using MainController::startTest;
  void startTest(const std::string& launchPath, const std::vector<std::string>& args,
                 const Text& comment) override {
    planned.push_back({.launchPath = launchPath, .args = args, .comment = comment});
    MainController::startTest("/bin/true", {}, comment);
  }

  std::vector<PlannedTest> planned;
};

inline std::shared_ptr<diagnostics::Process> makeProcess() {
  return std::make_shared<diagnostics::Process>(eventLoop());
}

/// The finished process of a shell command line.
inline std::shared_ptr<diagnostics::Process> runShell(const std::string& line) {
  const std::shared_ptr<diagnostics::Process> process = makeProcess();
  process->start("/bin/sh", {"-c", line}, std::nullopt);
  turnUntil([&] { return process->isFinished(); });
  return process;
}

}  // namespace support
