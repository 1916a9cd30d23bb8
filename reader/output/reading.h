// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// A report with all that was made of it: what the forms of output begin with.

#pragma once

#include <string>
#include <utility>
#include <vector>

#include "reader/facts/facts.h"
#include "reader/parse/report.h"
#include "reader/rules/rule.h"

namespace reader {

/// The text of the report must outlive it.
struct ReportReading {
  /// As the user gave it.
  std::string file{};
  Report report{};
  Facts facts{};
  std::vector<Finding> findings{};
};

/// Reads a report, with the plan of this build.
ReportReading readReport(const std::string& file, std::string_view text);

int countOf(const std::vector<Finding>& findings, Severity severity);

/// One sentence for a person.
std::string verdictOf(const std::vector<Finding>& findings);

/// Whether the text had any block.
inline bool isReport(const ReportReading& reading) {
  return !reading.report.blocks.empty();
}

/// Its name, with "..." in place of the word that differs from report to report.
std::string nameOf(const PlannedBlock& planned);

/// What matters most about a machine and its network, as labels and values; a value may be empty.
std::vector<std::pair<std::string, std::string>> mainFacts(const Facts& facts);

}  // namespace reader
