// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// What `system_profiler SPSoftwareDataType` prints, on macOS and by the script that replaces it on
// Linux.

#include <array>
#include <utility>

#include "reader/facts/extract.h"

namespace reader {

Reading readSystemProfiler(const BlockToRead& block, Facts& facts) {
  System& system = facts.system;
  const std::array<std::pair<std::string_view, std::string_view*>, 5> labels{{
      {"System Version: ", &system.version},
      {"Kernel Version: ", &system.kernel},
      {"Computer Name: ", &system.computer},
      {"User Name: ", &system.user},
      {"Time since boot: ", &system.timeSinceBoot},
  }};
  for (const Line& line : block.outputLines()) {
    for (const auto& [label, value] : labels) {
      if (const auto found = after(trimmed(line.text), label)) {
        *value = *found;
        system.source = system.source ? system.source : block.at(line);
      }
    }
  }
  const bool isEmpty = !block.block.standardOutput && !block.block.standardError;
  return system.source || isEmpty ? Reading::read : Reading::notUnderstood;
}

}  // namespace reader
