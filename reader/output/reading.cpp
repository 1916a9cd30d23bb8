// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "reader/output/reading.h"

#include <algorithm>
#include <set>

#include "reader/facts/extract.h"
#include "reader/output/printable.h"
#include "reader/rules/questions.h"

namespace reader {

namespace {

template <typename Range, typename Text>
std::string listed(const Range& range, Text text) {
  std::vector<std::string> parts;
  std::set<std::string> seen;
  for (const auto& element : range) {
    std::string part(text(element));
    if (!part.empty() && seen.insert(part).second) {
      parts.push_back(std::move(part));
    }
  }
  return printable(enumerated(parts));
}

std::string nearestCity(const Facts& facts) {
  const Ping* nearest = nullptr;
  for (const Ping& ping : facts.pings) {
    if (ping.minMs() && (nearest == nullptr || *ping.minMs() < *nearest->minMs())) {
      nearest = &ping;
    }
  }
  return nearest == nullptr ? std::string() : printable(nearest->name);
}

std::string skivraState(const Skivra& skivra) {
  if (skivra.isInstalled == false ||
      (!skivra.isInstalled && skivra.stateFile == Skivra::File::missing)) {
    return "not installed";
  }
  // That its folder is there does not say in which state it is.
  if (skivra.stateFile == Skivra::File::unknown) {
    return {};
  }
  return skivra.state.empty() ? "installed" : printable(skivra.state);
}

std::string counted(int count, const std::string& thing) {
  return std::to_string(count) + ' ' + thing + (count == 1 ? "" : "s");
}

}  // namespace

ReportReading readReport(const std::string& file, std::string_view text) {
  static const Plan plan(diagnostics::builtInEndpoints());
  ReportReading reading{.file = file, .report = parseReport(text, plan)};
  reading.facts = extractFacts(reading.report, diagnostics::builtInEndpoints());
  reading.findings = findAll(reading.facts);
  return reading;
}

int countOf(const std::vector<Finding>& findings, Severity severity) {
  return static_cast<int>(std::ranges::count(findings, severity, &Finding::severity));
}

std::string verdictOf(const std::vector<Finding>& findings) {
  std::vector<std::string> counts;
  const std::pair<Severity, std::string> severities[] = {
      {Severity::problem, "problem"}, {Severity::warning, "warning"}, {Severity::note, "note"}};
  for (const auto& [severity, thing] : severities) {
    if (const int count = countOf(findings, severity); count > 0) {
      counts.push_back(counted(count, thing));
    }
  }
  return counts.empty() ? "Nothing found." : enumerated(counts) + '.';
}

std::string nameOf(const PlannedBlock& planned) {
  return planned.prefix + (planned.hasWord ? "..." : "") + planned.suffix;
}

std::vector<std::pair<std::string, std::string>> mainFacts(const Facts& facts) {
  const auto addressOf = [](const auto& fact) { return fact.address; };
  const auto isAsked = [](const NameServer& server) {
    return server.domain.empty() ? server.address : std::string_view();
  };
  const auto gateway = [](const Route& route) {
    return route.isDefault && !route.isIpv6 ? route.gateway : std::string_view();
  };
  const auto answeringServer = [](const Resolver& resolver) {
    return resolver.asked.empty() ? resolver.server : std::string_view();
  };
  const auto organization = [](const Resolver& resolver) { return resolver.organization; };
  const auto isUsed = [](const Interface& interface) {
    const bool isShown = interface.isUp && interface.kind != Interface::Kind::loopback &&
                         !interface.addresses.empty();
    return isShown ? std::string(interface.name) + ' ' + std::string(interface.addresses.front())
                   : std::string();
  };
  return {
      {"system", printable(facts.system.version)},
      {"computer", printable(facts.system.computer)},
      {"time since boot", printable(facts.system.timeSinceBoot)},
      {"interfaces", listed(facts.interfaces, isUsed)},
      {"gateway", listed(facts.routes, gateway)},
      {"name servers", listed(facts.nameServers, isAsked)},
      {"public address", listed(facts.publicAddresses, addressOf)},
      {"resolver of the service", listed(facts.resolvers, answeringServer)},
      {"organization", listed(facts.resolvers, organization)},
      {"nearest city", nearestCity(facts)},
      {"Skivra", skivraState(facts.skivra)},
      {"domain", printable(facts.domain)},
  };
}

}  // namespace reader
