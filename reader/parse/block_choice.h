// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Which of the lines that look like the beginning of a block are one. What a command prints may
// hold such lines, even whole reports; the order of the plan tells the real ones.

#pragma once

#include <vector>

#include "reader/parse/plan.h"
#include "reader/parse/titles.h"

namespace reader {

/// A title that begins a block.
struct ChosenTitle {
  Title title{};
  /// Null if the plan does not have it.
  const PlannedBlock* planned = nullptr;
  /// Another title has the same name.
  bool isDoubtful = false;
};

/// The row of titles in the order of the plan that has the most commands of every run. Titles that
/// it leaves out should stand in pages or files, which may hold anything, and in the fewest of
/// them. Of rows that are equal, it is the one with the later titles: a stranger's page that
/// pretends to be a report can only forge what comes after its own block, and the real blocks come
/// after it. If most of the plan is not there at all, as in a report of another plan, all titles
/// begin blocks.
std::vector<ChosenTitle> chooseTitles(const std::vector<Title>& titles, const Plan& plan);

}  // namespace reader
