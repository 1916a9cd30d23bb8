// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Nothing beyond a point answers: the gateway itself is silent, or only what lies behind it.

#include <algorithm>
#include <set>

#include "reader/rules/questions.h"
#include "reader/rules/rule.h"

namespace reader {

namespace {

std::set<std::string_view> ownAddresses(const Facts& facts) {
  std::set<std::string_view> addresses;
  for (const Interface& interface : facts.interfaces) {
    addresses.insert(interface.addresses.begin(), interface.addresses.end());
  }
  return addresses;
}

/// A host on the way that answered; null if none did. The machine itself complains in its own name.
const Hop* lastAnsweringHop(const Facts& facts) {
  const std::set<std::string_view> own = ownAddresses(facts);
  const Hop* last = nullptr;
  for (const Path& path : facts.paths) {
    for (const Hop& hop : path.hops) {
      if (!hop.address.empty() && !own.contains(hop.address) &&
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

/// "192.168.1.1" of "192.168.1.1#53".
std::string_view answererOf(const Query& query) {
  return query.answeredBy.substr(0, query.answeredBy.find('#'));
}

/// An answer of a resolver elsewhere in the local network; null if there is none.
const Query* answerOfRouter(const Facts& facts) {
  for (const Query* query : ownQueries(facts)) {
    const std::string_view answerer = answererOf(*query);
    if (query->isAnswered() && !isLoopbackAddress(answerer) && isPrivateAddress(answerer)) {
      return query;
    }
  }
  return nullptr;
}

std::optional<Finding> findSilentGateway(const Facts& facts) {
  const std::vector<Source> paths = pathsToAddresses(facts);
  const std::vector<Source> routes = gateways(facts);
  // The gateway's own resolver shows that it is there.
  const bool isRouterAnswering = std::ranges::any_of(ownQueries(facts), [](const Query* query) {
    return query->isAnswered() && !isLoopbackAddress(answererOf(*query));
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
  if (paths.size() < 2 || anythingAnswers(facts)) {
    return std::nullopt;
  }
  Finding finding{
      .meaning = "The local network works, but the connection to the internet is down.",
      .advice = "Restart the router or modem. If that does not help, ask the internet provider."};
  const Hop* last = lastAnsweringHop(facts);
  const Query* answer = answerOfRouter(facts);
  if (last != nullptr) {
    finding.text = "Nothing answers beyond " + std::string(last->address) + ", " +
                   std::to_string(last->number) + (last->number == 1 ? " hop" : " hops") + " away.";
    finding.evidence.push_back(last->source);
  } else if (answer != nullptr && isResolutionBroken(facts)) {
    // Many a router lets no hop be seen.
    finding.text = "Nothing answers beyond " + std::string(answererOf(*answer)) +
                   ", the machine's own resolver, which gives errors alone.";
    finding.evidence.push_back(answer->source);
  } else {
    return std::nullopt;
  }
  addEvidence(finding.evidence, paths, 2);
  return finding;
}

const RegisteredRule silentGateway(
    {.id = "gateway-silent", .rank = 120, .isEndOfNetwork = true, .find = findSilentGateway});
const RegisteredRule deadLine(
    {.id = "line-down", .rank = 130, .isEndOfNetwork = true, .find = findDeadLine});

}  // namespace

}  // namespace reader
