// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// An interface that takes no packets of a size that everybody relies on.

#include <algorithm>

#include "reader/rules/questions.h"
#include "reader/rules/rule.h"

namespace reader {

namespace {

// What IPv6 asks of every link, and what answers to queries are made to fit into.
constexpr int smallestMtu = 1280;

bool isInUse(const Interface& interface) {
  return interface.isUp && interface.kind != Interface::Kind::loopback &&
         std::ranges::any_of(interface.addresses,
                             [](std::string_view address) { return !isLinkLocalAddress(address); });
}

std::optional<Finding> find(const Facts& facts) {
  std::vector<Source> evidence;
  std::vector<std::string> names;
  for (const Interface& interface : facts.interfaces) {
    if (isInUse(interface) && interface.mtu && *interface.mtu < smallestMtu) {
      evidence.push_back(interface.source);
      names.push_back(std::string(interface.name) + " (" + std::to_string(*interface.mtu) + ")");
    }
  }
  if (evidence.empty()) {
    return std::nullopt;
  }
  return Finding{.text = "The MTU is below 1280 on " + enumerated(names) + ".",
                 .meaning = "Long answers and pages may not arrive, while short ones do.",
                 .advice =
                     "Set the MTU of the interface back to its usual value, such as 1500, or "
                     "look for a tunnel that asks for less.",
                 .evidence = evidence};
}

const RegisteredRule rule(
    {.id = "small-mtu", .rank = 210, .subject = Subject::machine, .find = find});

}  // namespace

}  // namespace reader
