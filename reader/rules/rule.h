// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Rules: each looks at the facts and may find something that a person should know. A rule is a file
// of this folder, which registers itself; nothing else names it.

#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "reader/facts/facts.h"

namespace reader {

enum class Severity { problem, warning, note };

/// What a rule found.
struct Finding {
  /// Filled in from the rule.
  std::string_view id{};
  Severity severity = Severity::problem;
  /// One sentence for a person.
  std::string text{};
  /// What it means for the customer.
  std::string meaning{};
  /// What to ask or try next.
  std::string advice{};
  /// What it was concluded from; never empty.
  std::vector<Source> evidence{};
};

/// What a rule's finding can explain.
enum class Subject {
  /// The machine itself: what it says is true whatever its network does.
  machine,
  /// What is seen through the network, and says nothing where there is none.
  network
};

/// One rule.
struct Rule {
  /// Names the finding for ever, such as "no-default-route".
  std::string_view id{};
  /// Findings are shown in this order, problems before warnings before notes.
  int rank = 0;
  Subject subject = Subject::network;
  /// Whether it leaves no network: then it explains all findings of the network that rank below it.
  bool isEndOfNetwork = false;
  /// The findings below it that it explains, which are then not shown.
  std::vector<std::string_view> explains{};
  std::optional<Finding> (*find)(const Facts& facts) = nullptr;
};

/// Makes a rule known, from the file that it is in.
class RegisteredRule {
 public:
  explicit RegisteredRule(Rule rule);
};

/// All rules, by rank.
const std::vector<Rule>& allRules();

/// What the rules find, without what another finding explains: what matters most first.
std::vector<Finding> findAll(const Facts& facts);

}  // namespace reader
