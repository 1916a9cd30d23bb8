// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The machine knows no way out of its own network.

#include <algorithm>

#include "reader/rules/questions.h"
#include "reader/rules/rule.h"

namespace reader {

namespace {

std::optional<Finding> find(const Facts& facts) {
  if (!facts.routeList || std::ranges::any_of(facts.routes, &Route::isDefault)) {
    return std::nullopt;
  }
  // Linux does not list routes of IPv6 here.
  if (anythingAnswers(facts)) {
    return std::nullopt;
  }
  Finding finding{
      .text = "The machine has no default route.",
      .meaning =
          "It knows no way out of its local network, so it reaches neither the service nor "
          "anything else.",
      .advice =
          "Check the router's address in the network settings, and whether the router gives "
          "out settings (DHCP). Turn the network off and on again.",
      .evidence = {*facts.routeList}};
  for (const Route& route : facts.routes) {
    finding.evidence.push_back(route.source);
    if (finding.evidence.size() == 4) {
      break;
    }
  }
  return finding;
}

const RegisteredRule rule(
    {.id = "no-default-route", .rank = 110, .isEndOfNetwork = true, .find = find});

}  // namespace

}  // namespace reader
