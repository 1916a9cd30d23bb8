// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Which of the lines that look like the beginning of a block are one. What a command prints may
// hold such lines, even whole reports; the order of the plan shows the real ones.

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

/// The row of titles in the order of the plan that has the most commands of every run; the source
/// says which of several. If most of the plan is absent, as in a report of another plan, all titles
/// begin blocks.
std::vector<ChosenTitle> chooseTitles(const std::vector<Title>& titles, const Plan& plan);

}  // namespace reader
