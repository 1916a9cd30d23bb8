// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "reader/rules/questions.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "reader/parse/lines.h"

namespace reader {

std::string enumerated(const std::vector<std::string>& parts) {
  std::string text;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    if (i > 0) {
      text += i + 1 == parts.size() ? " and " : ", ";
    }
    text += parts[i];
  }
  return text;
}

std::string shown(double number) {
  // Nothing that is measured comes near it, but a report may say anything.
  constexpr double numberMax = 1e15;
  number = std::min(number, numberMax);
  const long long tenths = std::llround(number * 10);
  const bool isWhole = number >= 100 || tenths % 10 == 0;
  std::string text = std::to_string(isWhole ? std::llround(number) : tenths / 10);
  if (!isWhole) {
    text += '.' + std::to_string(tenths % 10);
  }
  return text;
}

bool anythingAnswers(const Facts& facts) {
  const auto isAnsweredPing = [](const Ping& ping) { return ping.received > 0; };
  const auto isAnsweredCheck = [](const WebCheck& check) {
    return check.status || !check.text.empty();
  };
  const auto isAnsweredPath = [](const Path& path) {
    return path.isReached() && !isPrivateAddress(path.address);
  };
  const auto isAnsweredQuery = [](const Query& query) {
    return query.isGood() && !query.server.empty() && !isPrivateAddress(query.server);
  };
  return std::ranges::any_of(facts.pings, isAnsweredPing) ||
         std::ranges::any_of(facts.webChecks, isAnsweredCheck) ||
         std::ranges::any_of(facts.paths, isAnsweredPath) ||
         std::ranges::any_of(facts.queries, isAnsweredQuery) ||
         std::ranges::any_of(facts.serverNames,
                             [](const ServerName& name) { return !name.name.empty(); });
}

std::vector<const Query*> ownQueries(const Facts& facts) {
  std::vector<const Query*> queries;
  for (const Query& query : facts.queries) {
    if (query.server.empty() && !query.key.starts_with("skivra-")) {
      queries.push_back(&query);
    }
  }
  return queries;
}

bool isResolutionBroken(const Facts& facts) {
  const std::vector<const Query*> queries = ownQueries(facts);
  return queries.size() >= 3 &&
         std::ranges::none_of(queries, [](const Query* query) { return query->isGood(); });
}

bool isAnybodyAnsweringOnPort53(const Facts& facts) {
  const auto isAnswered = [](const Query& query) {
    return query.port == 53 && !query.server.empty() && !isPrivateAddress(query.server) &&
           query.isAnswered();
  };
  return std::ranges::any_of(facts.queries, isAnswered) ||
         std::ranges::any_of(facts.serverNames,
                             [](const ServerName& name) { return !name.name.empty(); });
}

std::optional<bool> isSilentOnPort(const Facts& facts, int port) {
  std::optional<bool> isSilent;
  for (const Query& query : facts.queries) {
    if (query.server == facts.endpoints.serviceResolverA && query.port == port) {
      isSilent = isSilent.value_or(true) && !query.isAnswered();
    }
  }
  return isSilent;
}

bool isResolverASilent(const Facts& facts) {
  const auto on53 = isSilentOnPort(facts, 53);
  const auto on443 = isSilentOnPort(facts, 443);
  const auto on5353 = isSilentOnPort(facts, 5353);
  return on53 == true && on443 == true && on5353 != false;
}

bool hasSkivra(const Facts& facts) {
  return facts.skivra.isInstalled.value_or(facts.skivra.stateFile == Skivra::File::present);
}

double lossRate(const Facts& facts) {
  double sent = 0;
  double lost = 0;
  for (const Ping& ping : facts.pings) {
    if (ping.received > 0) {
      sent += ping.sent.value_or(0);
      lost += std::max(0, ping.sent.value_or(0) - *ping.received);
    }
  }
  return sent == 0 ? 0 : lost / sent;
}

std::vector<const WebCheck*> generalChecks(const Facts& facts) {
  std::vector<const WebCheck*> checks;
  for (const std::string_view key :
       {"web-block-id", "web-monitor", "web-block-id-head", "web-block-page", "web-by-number"}) {
    if (const WebCheck* check = facts.webCheck(key)) {
      checks.push_back(check);
    }
  }
  return checks;
}

std::string hostOf(std::string_view url) {
  return std::string(url.substr(0, url.find_first_of("/:")));
}

bool isErrorPage(const WebCheck& check) {
  const auto code = wholeNumber(check.title.substr(0, 3));
  return check.status >= 400 || code >= 400;
}

bool isLoop(const Path& path) {
  std::map<std::string_view, int> seen;
  std::string_view before;
  int returns = 0;
  for (const Hop& hop : path.hops) {
    if (!hop.address.empty() && hop.address != before) {
      returns += seen[hop.address]++ > 0 ? 1 : 0;
      before = hop.address;
    }
  }
  // Once may be a path that changed while it was looked at.
  return returns >= 2;
}

void addEvidence(std::vector<Source>& evidence, std::span<const Source> more,
                 std::size_t countMax) {
  const std::size_t count = std::min(more.size(), countMax);
  evidence.insert(evidence.end(), more.begin(), more.begin() + static_cast<std::ptrdiff_t>(count));
}

}  // namespace reader
