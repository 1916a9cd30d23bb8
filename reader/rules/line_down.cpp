// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Nothing beyond a point answers: the gateway itself is silent, or only what lies behind it.

#include <algorithm>

#include "reader/rules/questions.h"
#include "reader/rules/rule.h"

namespace reader {

namespace {

bool isOwnAddress(const Facts& facts, std::string_view address) {
  return std::ranges::any_of(facts.interfaces, [&](const Interface& interface) {
    return std::ranges::find(interface.addresses, address) != interface.addresses.end();
  });
}

/// A host on the way that answered; null if none did. The machine itself complains in its own name.
const Hop* lastAnsweringHop(const Facts& facts) {
  const Hop* last = nullptr;
  for (const Path& path : facts.paths) {
    for (const Hop& hop : path.hops) {
      if (!hop.address.empty() && !isOwnAddress(facts, hop.address) &&
          (last == nullptr || hop.number > last->number)) {
        last = &hop;
      }
    }
  }
  return last;
}

/// The paths to addresses were looked at: names may be unknown, but these need none.
std::vector<Source> pathsToAddresses(const Facts& facts) {
  std::vector<Source> sources;
  for (const std::string_view key : {"path-resolver-a", "path-resolver-b"}) {
    if (const Path* path = facts.path(key)) {
      sources.push_back(path->source);
    }
  }
  return sources;
}

std::vector<Source> gateways(const Facts& facts) {
  std::vector<Source> sources;
  for (const Route& route : facts.routes) {
    if (route.isDefault && !route.isIpv6) {
      sources.push_back(route.source);
    }
  }
  return sources;
}

std::optional<Finding> findSilentGateway(const Facts& facts) {
  const std::vector<Source> paths = pathsToAddresses(facts);
  const std::vector<Source> routes = gateways(facts);
  // The gateway's own resolver shows that it is there.
  const bool isRouterAnswering = std::ranges::any_of(ownQueries(facts), [](const Query* query) {
    return query->isAnswered() &&
           !isLoopbackAddress(query->answeredBy.substr(0, query->answeredBy.find('#')));
  });
  if (paths.size() < 2 || routes.empty() || anythingAnswers(facts) || isRouterAnswering ||
      lastAnsweringHop(facts) != nullptr) {
    return std::nullopt;
  }
  Finding finding{
      .text = "The gateway does not answer, and nothing behind it does.",
      .meaning =
          "The machine has an address and a default route, but nothing gets through its "
          "local network.",
      .advice =
          "Restart the router and check the cable or the wireless connection. See whether "
          "other devices in the same network work.",
      .evidence = routes};
  addEvidence(finding.evidence, paths, 2);
  return finding;
}

std::optional<Finding> findDeadLine(const Facts& facts) {
  const std::vector<Source> paths = pathsToAddresses(facts);
  const Hop* last = lastAnsweringHop(facts);
  if (paths.size() < 2 || last == nullptr || anythingAnswers(facts)) {
    return std::nullopt;
  }
  Finding finding{
      .text = "Nothing answers beyond " + std::string(last->address) + ", " +
              std::to_string(last->number) + (last->number == 1 ? " hop" : " hops") + " away.",
      .meaning = "The local network works, but the connection to the internet is down.",
      .advice = "Restart the router or modem. If that does not help, ask the internet provider.",
      .evidence = {last->source}};
  addEvidence(finding.evidence, paths, 2);
  return finding;
}

const RegisteredRule silentGateway(
    {.id = "gateway-silent", .rank = 120, .isEndOfNetwork = true, .find = findSilentGateway});
const RegisteredRule deadLine(
    {.id = "line-down", .rank = 130, .isEndOfNetwork = true, .find = findDeadLine});

}  // namespace

}  // namespace reader
