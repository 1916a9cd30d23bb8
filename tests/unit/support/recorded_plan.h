// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The parts of the plan, recorded instead of started.

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "diagnostics/plan.h"
#include "support/process_controller.h"

namespace support {

class PlanRecorder final : public diagnostics::CommandStarter {
 public:
  using CommandStarter::startTest;
  void startTest(const std::string& launchPath, const std::vector<std::string>& args,
                 const std::optional<std::string>& comment) override {
    tests.push_back({.launchPath = launchPath, .args = args, .comment = comment});
  }
  std::vector<PlannedTest> tests;
};

inline std::vector<PlannedTest> generalTests(const diagnostics::Endpoints& endpoints,
                                             const diagnostics::TestDomain& domain) {
  PlanRecorder recorder;
  diagnostics::startGeneralTests(recorder, endpoints, domain);
  return recorder.tests;
}

inline std::vector<PlannedTest> skivraTests(const diagnostics::Endpoints& endpoints,
                                            const diagnostics::TestDomain& domain) {
  PlanRecorder recorder;
  diagnostics::startSkivraTests(recorder, endpoints, domain);
  return recorder.tests;
}

inline std::vector<PlannedTest> systemLogAndBlockingTests(const diagnostics::Endpoints& endpoints) {
  constexpr int linesOfSystemLog = 15000;
  PlanRecorder recorder;
  diagnostics::startSystemLogAndBlockingTests(recorder, endpoints, linesOfSystemLog);
  return recorder.tests;
}

/// How many commands a run without the Skivra starts.
inline std::size_t countOfGeneralTests(const diagnostics::TestDomain& domain = std::nullopt) {
  return generalTests(diagnostics::builtInEndpoints(), domain).size();
}

}  // namespace support
