// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "reader/rules/rule.h"

#include <algorithm>
#include <utility>

namespace reader {

namespace {

std::vector<Rule>& registeredRules() {
  static std::vector<Rule> rules;
  return rules;
}

bool explains(const Rule& rule, const Rule& lower) {
  return (rule.isEndOfNetwork && lower.subject == Subject::network) ||
         std::ranges::find(rule.explains, lower.id) != rule.explains.end();
}

}  // namespace

RegisteredRule::RegisteredRule(Rule rule) {
  std::vector<Rule>& rules = registeredRules();
  const auto place = std::ranges::upper_bound(rules, rule.rank, {}, &Rule::rank);
  rules.insert(place, std::move(rule));
}

const std::vector<Rule>& allRules() {
  return registeredRules();
}

std::vector<Finding> findAll(const Facts& facts) {
  std::vector<Finding> findings;
  std::vector<const Rule*> found;
  for (const Rule& rule : allRules()) {
    std::optional<Finding> finding = rule.find(facts);
    if (!finding) {
      continue;
    }
    const bool isExplained =
        std::ranges::any_of(found, [&](const Rule* higher) { return explains(*higher, rule); });
    // What is explained itself still explains others.
    found.push_back(&rule);
    if (!isExplained) {
      finding->id = rule.id;
      findings.push_back(*std::move(finding));
    }
  }
  std::ranges::stable_sort(findings, {}, &Finding::severity);
  return findings;
}

}  // namespace reader
