// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The service's resolvers: do they answer, and on which ports?

#include <algorithm>

#include "reader/rules/questions.h"
#include "reader/rules/rule.h"

namespace reader {

namespace {

/// The queries to a server without an answer.
std::vector<Source> silence(const Facts& facts, std::string_view server) {
  std::vector<Source> sources;
  for (const Query& query : facts.queries) {
    if (query.server == server && !query.isAnswered()) {
      sources.push_back(query.source);
    }
  }
  return sources;
}

/// A host that refuses is there: nothing on the way has taken the question.
bool isRefused(const Facts& facts, std::string_view server) {
  return std::ranges::any_of(facts.queries, [&](const Query& query) {
    return query.server == server && query.error == "connection refused";
  });
}

bool isResolverADown(const Facts& facts) {
  return isResolverASilent(facts) &&
         (isRefused(facts, facts.endpoints.serviceResolverA) || isAnybodyAnsweringOnPort53(facts));
}

/// It is asked about the tested domain alone.
bool isResolverBDown(const Facts& facts) {
  const Query* query = facts.query("domain-b");
  if (query == nullptr || query->isAnswered()) {
    return false;
  }
  // Of a line that loses packets, silence proves nothing.
  const bool isSure = query->error == "connection refused" ||
                      (isAnybodyAnsweringOnPort53(facts) && lossRate(facts) < 0.03);
  return isSure;
}

std::optional<Finding> findDown(const Facts& facts) {
  std::vector<std::string> down;
  Finding finding{};
  if (isResolverADown(facts)) {
    down.push_back(facts.endpoints.serviceResolverA);
    addEvidence(finding.evidence, silence(facts, facts.endpoints.serviceResolverA), 3);
  }
  if (isResolverBDown(facts)) {
    down.push_back(facts.endpoints.serviceResolverB);
    addEvidence(finding.evidence, silence(facts, facts.endpoints.serviceResolverB), 1);
  }
  if (down.empty()) {
    return std::nullopt;
  }
  const bool isOne = down.size() == 1;
  finding.text = (isOne ? "The service's resolver " : "The service's resolvers ") +
                 enumerated(down) + (isOne ? " does not answer." : " do not answer.");
  for (const std::string_view key : {"path-resolver-a", "path-resolver-b"}) {
    const Path* path = facts.path(key);
    if (path != nullptr && path->isReached() &&
        std::ranges::find(down, path->address) != down.end()) {
      finding.text.pop_back();
      finding.text += ", though the host " + std::string(path->address) + " can be reached.";
      finding.evidence.push_back(path->source);
    }
  }
  finding.meaning =
      "Who asks this resolver alone can look up no names. Who asks both waits for an answer.";
  finding.advice =
      "Ask the service's staff whether the resolver is out of order. Until it is back, "
      "name the other one in the network settings.";
  return finding;
}

std::optional<Finding> findAllPortsBlocked(const Facts& facts) {
  if (!isResolverASilent(facts) || isResolverADown(facts)) {
    return std::nullopt;
  }
  Finding finding{
      .text =
          "The network lets no queries through to the service's resolvers, neither on port 53 "
          "nor on 443 and 5353.",
      .meaning =
          "The machine can use the service only if the network's own resolver does, and the "
          "Skivra cannot work here.",
      .advice =
          "Ask who runs the network to allow UDP and TCP to the service's resolvers on port "
          "53, or on 443 for the Skivra."};
  addEvidence(finding.evidence, silence(facts, facts.endpoints.serviceResolverA), 4);
  for (const ServerName& name : facts.serverNames) {
    finding.evidence.push_back(name.source);
  }
  return finding;
}

std::optional<Finding> findPort53Blocked(const Facts& facts) {
  const bool isOpenElsewhere =
      isSilentOnPort(facts, 443) == false || isSilentOnPort(facts, 5353) == false;
  if (isSilentOnPort(facts, 53) != true || !isOpenElsewhere) {
    return std::nullopt;
  }
  Finding finding{
      .text = "Queries to the service's resolver get no answer on port 53, but do on other ports.",
      .meaning =
          "The network blocks port 53. The machine cannot ask the service directly; the "
          "Skivra can, on port 443.",
      .advice =
          "Ask who runs the network to allow UDP and TCP to the service's resolvers on port "
          "53, or install the Skivra."};
  addEvidence(finding.evidence, silence(facts, facts.endpoints.serviceResolverA), 2);
  for (const std::string_view key : {"debug-443", "debug-5353"}) {
    if (const Query* query = facts.query(key); query != nullptr && query->isAnswered()) {
      finding.evidence.push_back(query->source);
    }
  }
  return finding;
}

std::optional<Finding> findOtherPortsBlocked(const Facts& facts) {
  Finding finding{
      .severity = Severity::warning,
      .meaning =
          "The machine can use the service, but the Skivra has no way round a network that "
          "meddles with port 53.",
      .advice = "Ask who runs the network to allow UDP to the service's resolvers on port 443."};
  std::vector<std::string> ports;
  for (const int port : {443, 5353}) {
    if (isSilentOnPort(facts, port) != true || isSilentOnPort(facts, 53) != false) {
      continue;
    }
    ports.push_back(std::to_string(port));
    const auto query = std::ranges::find_if(facts.queries, [&](const Query& each) {
      return each.port == port && each.server == facts.endpoints.serviceResolverA;
    });
    finding.evidence.push_back(query->source);
  }
  // Of a line that loses packets, silence proves nothing.
  if (ports.empty() || lossRate(facts) > 0.03) {
    return std::nullopt;
  }
  finding.text = "The service's resolver answers on port 53, but not on " + enumerated(ports) + ".";
  return finding;
}

const RegisteredRule down({.id = "resolver-down",
                           .rank = 400,
                           .explains = {"name-resolution-fails", "name-resolution-unsteady",
                                        "skivra-silent"},
                           .find = findDown});
const RegisteredRule allPortsBlocked({.id = "resolver-ports-blocked",
                                      .rank = 410,
                                      .explains = {"name-resolution-fails",
                                                   "name-resolution-unsteady", "service-not-used",
                                                   "skivra-silent"},
                                      .find = findAllPortsBlocked});
const RegisteredRule port53Blocked({.id = "port-53-blocked",
                                    .rank = 420,
                                    .explains = {"name-resolution-fails",
                                                 "name-resolution-unsteady", "service-not-used"},
                                    .find = findPort53Blocked});
const RegisteredRule otherPortsBlocked({.id = "other-ports-blocked",
                                        .rank = 425,
                                        .find = findOtherPortsBlocked});

}  // namespace

}  // namespace reader
