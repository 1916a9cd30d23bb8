// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Tools that printed something else than their result.

#include "reader/rules/questions.h"
#include "reader/rules/rule.h"

namespace reader {

namespace {

std::optional<Finding> find(const Facts& facts) {
  if (facts.toolErrors.empty()) {
    return std::nullopt;
  }
  std::vector<std::string> kinds;
  Finding finding{.severity = Severity::warning,
                  .meaning = "What these tools should have told is not known.",
                  .advice =
                      "Look at the messages. A tool that is missing has to be installed before "
                      "the diagnostic is run again."};
  for (const ToolError& error : facts.toolErrors) {
    if (kinds.empty() || kinds.back() != error.kind) {
      kinds.emplace_back(error.kind);
    }
    finding.evidence.push_back(error.source);
  }
  finding.text = "Tools printed something else than a result: " + enumerated(kinds) + ".";
  return finding;
}

const RegisteredRule rule({.id = "tool-error", .rank = 740, .find = find});

}  // namespace

}  // namespace reader
