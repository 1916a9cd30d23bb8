// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// What the resolvers say about the tested domain.

#include <algorithm>
#include <array>
#include <set>

#include "reader/rules/questions.h"
#include "reader/rules/rule.h"

namespace reader {

namespace {

constexpr std::array keys{"domain", "domain-a", "domain-b", "domain-third-party", "skivra-domain"};
constexpr std::string_view thirdParty = "domain-third-party";
constexpr std::string_view nowhere = "0.0.0.0";

std::vector<const Query*> answered(const Facts& facts) {
  std::vector<const Query*> queries;
  for (const std::string_view key : keys) {
    const Query* query = facts.query(key);
    if (query != nullptr && query->isGood() && !facts.domain.empty()) {
      queries.push_back(query);
    }
  }
  return queries;
}

std::string serverOf(const Query& query) {
  return query.server.empty() ? "the machine's own resolver" : std::string(query.server);
}

std::set<std::string_view> addressesOf(const Query& query) {
  std::set<std::string_view> addresses;
  for (const Answer& answer : query.answers) {
    if (answer.type == "A") {
      addresses.insert(answer.data);
    }
  }
  return addresses;
}

/// Whether a name is that of a zone, or of something in it.
bool isWithin(std::string_view name, std::string_view zone) {
  if (zone.starts_with('.')) {
    zone.remove_prefix(1);
  }
  if (zone.empty() || !name.ends_with(zone)) {
    return false;
  }
  name.remove_suffix(zone.size());
  return name.empty() || name.ends_with('.');
}

/// Names that the Skivra leaves to the local network may have private addresses.
bool isLocal(const Facts& facts) {
  return std::ranges::any_of(facts.skivra.localDomains,
                             [&](std::string_view local) { return isWithin(facts.domain, local); });
}

std::optional<Finding> findMissing(const Facts& facts) {
  std::vector<std::string> servers;
  Finding finding{.meaning = "Pages of this domain do not open for this customer.",
                  .advice =
                      "Check how the domain is written. If it exists elsewhere, have the "
                      "service's staff look at what its resolvers know of it."};
  bool isKnownElsewhere = false;
  bool isServices = false;
  for (const Query* query : answered(facts)) {
    if (query->status == "NXDOMAIN") {
      servers.push_back(serverOf(*query));
      finding.evidence.push_back(query->source);
      isServices |= query->key != thirdParty;
    } else {
      isKnownElsewhere |= !addressesOf(*query).empty();
    }
  }
  if (!isServices) {
    return std::nullopt;
  }
  finding.text = "There is no domain " + std::string(facts.domain) + ", say " +
                 enumerated(servers) + (isKnownElsewhere ? "; others know it." : ".");
  return finding;
}

/// The service cannot look up what others know.
std::optional<Finding> findError(const Facts& facts) {
  const Query* others = facts.query(thirdParty);
  if (facts.domain.empty() || others == nullptr || addressesOf(*others).empty()) {
    return std::nullopt;
  }
  std::vector<std::string> servers;
  Finding finding{.meaning = "Pages of this domain do not open for this customer.",
                  .advice =
                      "Have the service's staff look at why its resolvers fail: the domain's own "
                      "servers or its signatures (DNSSEC) may be out of order."};
  for (const std::string_view key : {"domain-a", "domain-b"}) {
    const Query* query = facts.query(key);
    if (query != nullptr && query->isGood()) {
      return std::nullopt;
    }
    if (query != nullptr && query->isAnswered()) {
      servers.push_back(serverOf(*query) + ": " + std::string(query->status));
      finding.evidence.push_back(query->source);
    }
  }
  if (servers.empty()) {
    return std::nullopt;
  }
  finding.text = "The service cannot look up " + std::string(facts.domain) + " (" +
                 enumerated(servers) + "), though " + serverOf(*others) + " knows it.";
  finding.evidence.push_back(others->answers.front().source);
  return finding;
}

std::optional<Finding> findPrivate(const Facts& facts) {
  std::vector<std::string> servers;
  Finding finding{.meaning =
                      "The domain leads into a local network, where its server is not. "
                      "Somebody may have changed the answer.",
                  .advice =
                      "See whether the domain is meant to be internal. If not, look for a "
                      "router, a filter or an entry in a hosts file that changes it."};
  bool isNowhere = true;
  bool isCustomers = false;
  for (const Query* query : answered(facts)) {
    for (const Answer& answer : query->answers) {
      if (answer.type == "A" && isPrivateAddress(answer.data)) {
        servers.push_back(std::string(answer.data) + " (" + serverOf(*query) + ")");
        finding.evidence.push_back(answer.source);
        isNowhere &= answer.data == nowhere;
        isCustomers |= query->key != thirdParty;
      }
    }
  }
  // What is said to others alone does not concern this customer.
  if (!isCustomers || isLocal(facts)) {
    return std::nullopt;
  }
  if (isNowhere) {
    finding.meaning = "That address leads nowhere. Filters answer so for what they block.";
    finding.advice =
        "Look for a filter in the router, a program or a hosts file on the machine, such as one "
        "against advertisements, and allow the domain there.";
  }
  finding.text = "The domain " + std::string(facts.domain) +
                 (isNowhere ? " has no real address: " : " has a private address: ") +
                 enumerated(servers) + ".";
  return finding;
}

std::optional<Finding> findBlocked(const Facts& facts) {
  const Path* blockPage = facts.path("path-block-page");
  Finding finding{.severity = Severity::warning,
                  .meaning = "The filter blocks this domain for this customer.",
                  .advice =
                      "If it should be open, look at the organization's block lists and at the "
                      "category of the domain."};
  if (blockPage == nullptr || blockPage->address.empty()) {
    return std::nullopt;
  }
  for (const Query* query : answered(facts)) {
    for (const Answer& answer : query->answers) {
      if (answer.type == "A" && answer.data == blockPage->address) {
        finding.evidence.push_back(answer.source);
      }
    }
  }
  if (finding.evidence.empty()) {
    return std::nullopt;
  }
  finding.text = "The domain " + std::string(facts.domain) + " leads to the block page.";
  finding.evidence.push_back(blockPage->source);
  return finding;
}

bool haveCommonAddress(const Query& a, const Query& b) {
  const std::set<std::string_view> addresses = addressesOf(a);
  return std::ranges::any_of(addressesOf(b),
                             [&](std::string_view address) { return addresses.contains(address); });
}

/// Networks that serve pages from many places give different answers on purpose, by an alias.
bool hasAlias(const std::vector<const Query*>& queries) {
  return std::ranges::any_of(queries, [](const Query* query) {
    return std::ranges::any_of(query->answers,
                               [](const Answer& answer) { return answer.type == "CNAME"; });
  });
}

std::string answerOf(const Query& query) {
  const std::set<std::string_view> addresses = addressesOf(query);
  if (addresses.empty()) {
    return query.status == "NXDOMAIN" ? "no such domain" : "no address";
  }
  return enumerated({addresses.begin(), addresses.end()});
}

std::optional<Finding> findDifference(const Facts& facts) {
  const std::vector<const Query*> queries = answered(facts);
  const bool differ = std::ranges::any_of(queries, [&](const Query* query) {
    return !haveCommonAddress(*queries.front(), *query) &&
           !(addressesOf(*queries.front()).empty() && addressesOf(*query).empty());
  });
  if (!differ) {
    return std::nullopt;
  }
  Finding finding{.severity = hasAlias(queries) ? Severity::note : Severity::problem,
                  .meaning =
                      "The customer may be led to another server than others are: to an old "
                      "one, to one nearby, or to one that somebody else runs.",
                  .advice =
                      "Ask whose addresses these are. If the service's answer is out of date, "
                      "have its staff clear it."};
  std::vector<std::string> answers;
  for (const Query* query : queries) {
    answers.push_back(serverOf(*query) + ": " + answerOf(*query));
    finding.evidence.push_back(query->answers.empty() ? query->source
                                                      : query->answers.front().source);
  }
  finding.text = "Resolvers give different answers for " + std::string(facts.domain) + " (" +
                 enumerated(answers) + ").";
  return finding;
}

const RegisteredRule missing(
    {.id = "domain-missing", .rank = 600, .explains = {"answers-differ"}, .find = findMissing});
const RegisteredRule error({.id = "domain-error", .rank = 605, .find = findError});
const RegisteredRule privateAddress(
    {.id = "domain-private", .rank = 610, .explains = {"answers-differ"}, .find = findPrivate});
const RegisteredRule blocked(
    {.id = "domain-blocked", .rank = 620, .explains = {"answers-differ"}, .find = findBlocked});
const RegisteredRule difference({.id = "answers-differ", .rank = 630, .find = findDifference});

}  // namespace

}  // namespace reader
