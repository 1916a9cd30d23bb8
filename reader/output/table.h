// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The reports of many machines.

#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "reader/output/reading.h"

namespace reader {

/// What a table of many reports keeps of one.
struct TableRow {
  std::string file{};
  std::vector<std::string> problems{};
  std::map<std::string, std::string> sentences{};  // of the problems
  std::vector<std::string> warnings{};
  /// Blocks that findings rest on are missing, shortened or cut.
  bool isIncomplete = false;
  std::vector<std::pair<std::string, std::string>> facts{};
};

TableRow rowOf(const ReportReading& reading);

/// A line for each machine, those with findings that few have first; then how many share a
/// problem, with its sentence where all of them have the same one, and what all have in common.
std::string tableOf(std::vector<TableRow> rows);

}  // namespace reader
