// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Paths that do not lead to their host.

#include <algorithm>
#include <span>

#include "reader/rules/questions.h"
#include "reader/rules/rule.h"

namespace reader {

namespace {

std::optional<Finding> findLoop(const Facts& facts) {
  std::vector<std::string> hosts;
  Finding finding{.meaning = "Packets to these hosts never arrive.",
                  .advice =
                      "Send the report to the provider of the network in which the loop is: "
                      "the hosts that return are its routers."};
  for (const Path& path : facts.paths) {
    if (!isLoop(path) || path.isReached()) {
      continue;
    }
    hosts.emplace_back(path.host);
    finding.evidence.push_back(path.source);
    // No loop has fewer.
    for (const Hop& hop : std::span(path.hops).last(4)) {
      finding.evidence.push_back(hop.source);
    }
  }
  if (hosts.empty()) {
    return std::nullopt;
  }
  finding.text = "The route to " + enumerated(hosts) + " goes in a circle.";
  return finding;
}

/// Whether something else shows that the host is there.
bool isKnownToAnswer(const Facts& facts, const Path& path) {
  const auto isPinged = [&](const Ping& ping) {
    return ping.address == path.address && ping.received > 0;
  };
  const auto isAsked = [&](const Query& query) {
    return query.server == path.address && query.isAnswered();
  };
  const auto isVisited = [&](const WebCheck& check) {
    return check.kind != WebCheck::Kind::nothing &&
           (check.url.starts_with(path.host) || check.url.starts_with(path.address));
  };
  return std::ranges::any_of(facts.pings, isPinged) ||
         std::ranges::any_of(facts.queries, isAsked) ||
         std::ranges::any_of(facts.webChecks, isVisited);
}

/// If it does not answer, the finding about the resolver itself says more than the path to it.
bool isAskedResolver(const Facts& facts, const Path& path) {
  const auto isAsked = [&](const Query& query) { return query.server == path.address; };
  return (path.key == "path-resolver-a" || path.key == "path-resolver-b") &&
         std::ranges::any_of(facts.queries, isAsked);
}

/// A host that refuses the packet says more than one that passed it on.
std::string endText(const Hop* end) {
  if (end == nullptr) {
    return "no hop answers";
  }
  HopHost host{.address = end->address, .note = end->note};
  const auto other =
      std::ranges::find_if(end->others, [](const HopHost& each) { return !each.note.empty(); });
  if (host.note.empty() && other != end->others.end()) {
    host = *other;
  }
  return host.note.empty()
             ? "after " + std::string(host.address)
             : "refused by " + std::string(host.address) + ", " + std::string(host.note);
}

std::optional<Finding> findEarlyEnd(const Facts& facts) {
  std::vector<std::string> hosts;
  Finding finding{.meaning = "These hosts cannot be reached from here.",
                  .advice =
                      "Run the diagnostic again later. If it stays, send the report to the "
                      "network staff of the service: the last hop that answered shows where "
                      "to look."};
  for (const Path& path : facts.paths) {
    // A stranger's host may just not answer such probes.
    if (path.key == "path-domain" || path.address.empty() || !path.error.empty() ||
        path.isReached() || isLoop(path) || isKnownToAnswer(facts, path) ||
        isAskedResolver(facts, path)) {
      continue;
    }
    const Hop* end = path.end();
    hosts.push_back(std::string(path.host) + " (" + endText(end) + ")");
    finding.evidence.push_back(path.source);
    if (end != nullptr) {
      finding.evidence.push_back(end->source);
    }
  }
  if (hosts.empty()) {
    return std::nullopt;
  }
  finding.text = "The route ends before it reaches " + enumerated(hosts) + ".";
  return finding;
}

const RegisteredRule loop({.id = "routing-loop", .rank = 350, .find = findLoop});
const RegisteredRule earlyEnd({.id = "path-ends-early", .rank = 360, .find = findEarlyEnd});

}  // namespace

}  // namespace reader
