// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// A report taken apart: its head, its blocks, and what is in neither, without losing a byte. All
// texts are views into the report, which must outlive them.

#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "reader/parse/plan.h"

namespace reader {

/// One block of a report.
struct Block {
  /// All of it, from its separator to the next one.
  std::string_view whole{};
  std::string_view name{};
  /// Absent if the command printed nothing there.
  std::optional<std::string_view> standardOutput{};
  std::optional<std::string_view> standardError{};
  /// Where the block and its streams begin; lines are counted from 1.
  std::size_t line = 0;
  std::size_t outputLine = 0;
  std::size_t errorLine = 0;
  /// What the plan knows of it; null if the plan does not have it.
  const PlannedBlock* planned = nullptr;
  /// It was shortened before it was sent.
  bool isTrimmed = false;
  /// The report ends in it, or lacks what has to follow.
  bool isCut = false;
  /// Its text is not in the form of a block.
  bool isMalformed = false;
  /// It could as well begin at another place of the report.
  bool isDoubtful = false;

  bool isComplete() const { return !isTrimmed && !isCut && !isMalformed; }
  std::string_view output() const { return standardOutput.value_or(std::string_view()); }
  std::string_view error() const { return standardError.value_or(std::string_view()); }
};

/// What stands in no block.
struct Unread {
  std::string_view text{};
  std::size_t line = 0;
  std::string_view why{};
};

/// A report whose plan outlives it.
struct Report {
  std::optional<std::string_view> account{};
  std::optional<std::string_view> ticket{};
  /// The lines of account and ticket, with what stands before them: the separator in a trimmed
  /// report, a byte order mark in one that an editor has saved.
  std::string_view head{};
  std::vector<Block> blocks{};
  std::vector<Unread> unread{};
  /// Of the plan, what the report should have and has not.
  std::vector<const PlannedBlock*> missing{};
};

/// Reads any text. One that is no report has no blocks, and is in `unread` as a whole.
Report parseReport(std::string_view text, const Plan& plan);

}  // namespace reader
