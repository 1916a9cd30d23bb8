// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The blocks that a report may have, in their order: the plan of halvik-diagnostic, asked for what
// it would start.

#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "diagnostics/endpoints.h"

namespace reader {

/// One command of the plan.
struct PlannedBlock {
  /// Which part of the plan it belongs to: each run has those of `always`, a run for a domain those
  /// of `domain`, and one on a machine with the Skivra those of `skivra`, where some may be absent.
  enum class Part { always, domain, skivra, skivraPerhaps };

  /// Stays the same whatever the endpoints are, such as "debug-53".
  std::string key{};
  /// The tool that it calls, such as "dig".
  std::string kind{};
  /// Its name in the report, or what stands before and after the one word that differs from report
  /// to report.
  std::string prefix{};
  std::string suffix{};
  bool hasWord = false;
  /// Any number of blocks may have this place: the logs of a folder.
  bool isRepeated = false;
  Part part = Part::always;
};

/// The plan for given endpoints.
class Plan {
 public:
  explicit Plan(const diagnostics::Endpoints& endpoints);

  const std::vector<PlannedBlock>& blocks() const { return planned; }

  /// The places at which a block of this name may stand, in ascending order.
  std::vector<std::size_t> placesOf(std::string_view name) const;

 private:
  std::vector<PlannedBlock> planned;
  std::map<std::string, std::vector<std::size_t>, std::less<>> places;
  std::vector<std::size_t> placesWithWord;
};

/// The word of a name that matches a planned block with one, and an empty text if it does not
/// match.
std::string_view wordIn(const PlannedBlock& planned, std::string_view name);

}  // namespace reader
