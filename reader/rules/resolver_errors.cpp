// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Resolvers that answer, but with an error: the service's, and the machine's own.

#include <algorithm>

#include "reader/rules/questions.h"
#include "reader/rules/rule.h"

namespace reader {

namespace {

bool isError(const Query& query) {
  return query.isAnswered() && !query.isGood();
}

/// Of a domain that is itself out of order, a resolver says SERVFAIL, and is right.
bool isOfDomain(const Facts& facts, const Query& query) {
  return query.name == facts.domain && query.status == "SERVFAIL";
}

/// The errors of a server that gives nothing else; none if it gives an answer.
std::vector<const Query*> errorsAlone(const Facts& facts, std::string_view server) {
  std::vector<const Query*> errors;
  bool isOwnFault = false;
  for (const Query& query : facts.queries) {
    if (query.server != server || !query.isAnswered()) {
      continue;
    }
    if (query.isGood()) {
      return {};
    }
    errors.push_back(&query);
    isOwnFault |= !isOfDomain(facts, query);
  }
  return isOwnFault ? errors : std::vector<const Query*>();
}

std::optional<Finding> findErrors(const Facts& facts) {
  std::vector<std::string> servers;
  Finding finding{.meaning =
                      "Who asks this resolver can look up no names. It may not know the customer's "
                      "network, or something on the way answers in its place.",
                  .advice =
                      "Ask the service's staff whether the resolver is out of order, and whether "
                      "it serves the address that the customer asks from."};
  for (const std::string& server :
       {facts.endpoints.serviceResolverA, facts.endpoints.serviceResolverB}) {
    const std::vector<const Query*> errors = errorsAlone(facts, server);
    if (!errors.empty()) {
      servers.push_back(server + " (" + std::string(errors.front()->status) + ")");
    }
    for (std::size_t i = 0; i < std::min<std::size_t>(errors.size(), 3); ++i) {
      finding.evidence.push_back(errors[i]->source);
    }
  }
  if (servers.empty()) {
    return std::nullopt;
  }
  finding.text = std::string(servers.size() == 1 ? "The service's resolver answers"
                                                 : "The service's resolvers answer") +
                 " with nothing but errors: " + enumerated(servers) + ".";
  return finding;
}

bool isAnyAnswerGood(const Facts& facts, int port) {
  return std::ranges::any_of(facts.queries, [&](const Query& query) {
    return query.server == facts.endpoints.serviceResolverA && query.port == port && query.isGood();
  });
}

/// The same question, to the same host: whether it is an error must not depend on the port.
std::optional<Finding> findErrorOnPort53(const Facts& facts) {
  const Query* query = facts.query("debug-53");
  if (query == nullptr || !isError(*query)) {
    return std::nullopt;
  }
  for (const std::string_view key : {"debug-443", "debug-5353"}) {
    const Query* other = facts.query(key);
    if (other == nullptr || !other->isGood()) {
      continue;
    }
    return Finding{.severity = isAnyAnswerGood(facts, 53) ? Severity::warning : Severity::problem,
                   .text = "The service's resolver answers a query with an error on port 53 (" +
                           std::string(query->status) + "), but not on port " +
                           std::to_string(other->port) + ".",
                   .meaning =
                       "Something on the way may answer in its place on port 53, so names may be "
                       "unknown or not filtered.",
                   .advice =
                       "Run the diagnostic again. If it stays, ask who runs the network what "
                       "becomes of queries to other resolvers.",
                   .evidence = {query->source, other->source}};
  }
  return std::nullopt;
}

std::optional<Finding> findUnsteady(const Facts& facts) {
  // Of a line that loses packets, silence proves nothing.
  constexpr double lossMax = 0.03;
  const std::vector<const Query*> queries = ownQueries(facts);
  std::vector<Source> failed;
  for (const Query* query : queries) {
    if (!query->isGood()) {
      failed.push_back(query->source);
    }
  }
  if (queries.size() < 3 || 2 * failed.size() < queries.size() || isResolutionBroken(facts) ||
      lossRate(facts) > lossMax) {
    return std::nullopt;
  }
  Finding finding{.severity = Severity::warning,
                  .text = "The machine's own resolver gives no good answer to " +
                          std::to_string(failed.size()) + " of " + std::to_string(queries.size()) +
                          " queries.",
                  .meaning = "Some pages do not open, or only after a while.",
                  .advice =
                      "Run the diagnostic again. If it stays, restart the router, and check which "
                      "resolvers the machine and the router ask."};
  addEvidence(finding.evidence, failed, 4);
  return finding;
}

const RegisteredRule errors({.id = "resolver-error",
                             .rank = 405,
                             .explains = {"name-resolution-fails", "name-resolution-unsteady",
                                          "domain-error"},
                             .find = findErrors});
const RegisteredRule errorOnPort53({.id = "port-53-error", .rank = 415, .find = findErrorOnPort53});
const RegisteredRule unsteady({.id = "name-resolution-unsteady",
                               .rank = 445,
                               .find = findUnsteady});

}  // namespace

}  // namespace reader
