// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Who answers the machine's queries: the service, or somebody else?

#include "reader/rules/questions.h"
#include "reader/rules/rule.h"

namespace reader {

namespace {

bool isAnsweredByOthers(const Resolver* resolver) {
  return resolver != nullptr && resolver->isService == false;
}

/// Servers of several operators that all go by one name are one.
std::vector<Source> sameNames(const Facts& facts) {
  std::vector<Source> sources;
  std::string_view common;
  for (const ServerName& name : facts.serverNames) {
    if (name.name.empty() || (!common.empty() && name.name != common)) {
      return {};
    }
    common = name.name;
    sources.push_back(name.source);
  }
  return sources.size() < 2 ? std::vector<Source>() : sources;
}

std::optional<Finding> findHijack(const Facts& facts) {
  const Resolver* direct = facts.resolver("debug-53");
  if (!isAnsweredByOthers(direct)) {
    return std::nullopt;
  }
  Finding finding{
      .text = "Queries to the service's resolver on port 53 are answered by somebody else",
      .meaning =
          "The network redirects all queries to a resolver of its own, so nothing is "
          "filtered, whatever resolver the machine is set to.",
      .advice =
          "Look for a setting such as \"DNS redirection\" or \"secure DNS\" in the router, ask "
          "the internet provider to end the redirection, or install the Skivra, which asks on "
          "port 443.",
      .evidence = {direct->source}};
  const std::vector<Source> names = sameNames(facts);
  if (!names.empty()) {
    finding.text += ", who goes by the name " + std::string(facts.serverNames.front().name);
    addEvidence(finding.evidence, names, 3);
  }
  finding.text += '.';
  for (const std::string_view key : {"debug-443", "debug-5353"}) {
    const Resolver* other = facts.resolver(key);
    if (other != nullptr && other->isService == true) {
      finding.evidence.push_back(other->source);
    }
  }
  return finding;
}

/// "192.168.1.1 (which asks from 198.18.7.53)".
std::string usedInstead(const Facts& facts, std::vector<Source>& evidence) {
  std::vector<std::string> used;
  for (const NameServer& server : facts.nameServers) {
    if (server.domain.empty()) {
      used.emplace_back(server.address);
      evidence.push_back(server.source);
    }
  }
  std::string text = used.empty() ? "another resolver" : enumerated(used);
  if (!facts.resolverAddresses.empty()) {
    text += ", which asks others from " + std::string(facts.resolverAddresses.front().address);
    evidence.push_back(facts.resolverAddresses.front().source);
  }
  return text;
}

std::optional<Finding> findOtherResolver(const Facts& facts) {
  const Resolver* own = facts.resolver("debug");
  if (!isAnsweredByOthers(own)) {
    return std::nullopt;
  }
  Finding finding{
      .meaning = "Nothing that this machine looks up is filtered.",
      .advice =
          "Name the service's resolvers in the network settings of the machine or the router, "
          "or install the Skivra.",
      .evidence = {own->source}};
  finding.text =
      "The machine does not use the service: it asks " + usedInstead(facts, finding.evidence) + ".";
  return finding;
}

std::optional<Finding> findNoResolution(const Facts& facts) {
  if (!isResolutionBroken(facts)) {
    return std::nullopt;
  }
  Finding finding{.text = "The machine cannot look up any names",
                  .meaning = "No page opens and nothing that is reached by a name works.",
                  .advice =
                      "Check the resolvers in the network settings. If the router is one of "
                      "them, restart it and look which resolvers it asks."};
  std::vector<Source> evidence;
  for (const Query* query : ownQueries(facts)) {
    evidence.push_back(query->source);
  }
  addEvidence(finding.evidence, evidence, 3);
  std::vector<std::string> servers;
  for (const NameServer& server : facts.nameServers) {
    servers.emplace_back(server.address);
    finding.evidence.push_back(server.source);
  }
  if (!servers.empty()) {
    finding.text += ": its resolver " + enumerated(servers) + " gives no answers";
  }
  finding.text += '.';
  return finding;
}

const RegisteredRule hijack({.id = "port-53-hijacked",
                             .rank = 430,
                             .explains = {"service-not-used", "answers-differ",
                                          "unexpected-block-page"},
                             .find = findHijack});
const RegisteredRule noResolution({.id = "name-resolution-fails",
                                   .rank = 440,
                                   .explains = {"service-not-used"},
                                   .find = findNoResolution});
const RegisteredRule otherResolver({.id = "service-not-used",
                                    .rank = 450,
                                    .explains = {"skivra-not-used"},
                                    .find = findOtherResolver});

}  // namespace

}  // namespace reader
