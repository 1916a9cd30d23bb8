// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// No interface of the machine has an address by which it could reach others.

#include <algorithm>

#include "reader/rules/questions.h"
#include "reader/rules/rule.h"

namespace reader {

namespace {

bool hasUsableAddress(const Interface& interface) {
  const auto isUsable = [](std::string_view address) {
    return !isLinkLocalAddress(address) && !isLoopbackAddress(address);
  };
  return interface.isUp && interface.kind != Interface::Kind::loopback &&
         std::ranges::any_of(interface.addresses, isUsable);
}

std::optional<Finding> find(const Facts& facts) {
  if (!facts.interfaceList || std::ranges::any_of(facts.interfaces, hasUsableAddress)) {
    return std::nullopt;
  }
  // What nobody gave out may be enough, as between two machines.
  if (anythingAnswers(facts)) {
    return std::nullopt;
  }
  Finding finding{
      .text = "No network interface of the machine has an address.",
      .meaning =
          "The machine is not connected to any network, so nothing else that the report "
          "shows can work.",
      .advice =
          "Check the cable or the wireless network, and whether the router gives out "
          "addresses. An address that begins with 169.254 is one that nobody gave out.",
      .evidence = {*facts.interfaceList}};
  for (const Interface& interface : facts.interfaces) {
    if (interface.kind != Interface::Kind::loopback) {
      finding.evidence.push_back(interface.source);
    }
  }
  return finding;
}

const RegisteredRule rule({.id = "no-address", .rank = 100, .isEndOfNetwork = true, .find = find});

}  // namespace

}  // namespace reader
