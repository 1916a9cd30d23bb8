// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "reader/output/json_facts.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>

namespace reader {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t textMax = 500;

/// Facts that a report does not tell are null.
Json text(std::string_view value) {
  return value.empty() ? Json(nullptr) : Json(std::string(value.substr(0, textMax)));
}

template <typename Value>
Json value(const std::optional<Value>& optional) {
  return optional ? Json(*optional) : Json(nullptr);
}

Json rounded(std::optional<double> number) {
  constexpr double thousand = 1000;
  return number ? Json(std::round(*number * thousand) / thousand) : Json(nullptr);
}

Json texts(const std::vector<std::string_view>& values) {
  Json list = Json::array();
  for (const std::string_view each : values) {
    list.push_back(std::string(each.substr(0, textMax)));
  }
  return list;
}

Json withSource(Json fact, const Source& source) {
  fact["block"] = source.block;
  fact["line"] = source.line;
  return fact;
}

template <typename Fact, typename Convert>
Json listOf(const std::vector<Fact>& facts, Convert convert) {
  Json list = Json::array();
  for (const Fact& fact : facts) {
    list.push_back(convert(fact));
  }
  return list;
}

Json resolverObject(const Resolver& resolver) {
  return withSource({{"asked", text(resolver.asked)},
                     {"port", resolver.port},
                     {"answeredBy", text(resolver.answeredBy)},
                     {"service", value(resolver.isService)},
                     {"server", text(resolver.server)},
                     {"organization", text(resolver.organization)},
                     {"dataCentre", text(resolver.dataCentre)},
                     {"source", text(resolver.askedFrom)},
                     {"timeMs", rounded(resolver.timeMs)},
                     {"error", text(resolver.error)}},
                    resolver.source);
}

Json publicAddressObject(const PublicAddress& address) {
  return withSource({{"address", std::string(address.address)},
                     {"by", std::string(address.by)},
                     {"server", text(address.server)}},
                    address.source);
}

Json resolverAddressObject(const PublicAddress& address) {
  return withSource({{"address", std::string(address.address)}, {"by", std::string(address.by)}},
                    address.source);
}

Json nameServerObject(const NameServer& server) {
  return withSource({{"address", std::string(server.address)},
                     {"resolver", value(server.resolver)},
                     {"interface", text(server.interface)},
                     {"domain", text(server.domain)}},
                    server.source);
}

Json queryObject(const Query& query) {
  const auto answer = [](const Answer& each) {
    return Json{{"name", std::string(each.name)},
                {"type", std::string(each.type)},
                {"data", std::string(each.data.substr(0, textMax))},
                {"line", each.source.line}};
  };
  return withSource({{"key", query.key},
                     {"name", std::string(query.name)},
                     {"type", query.type},
                     {"server", text(query.server)},
                     {"port", query.port},
                     {"status", text(query.status)},
                     {"answers", listOf(query.answers, answer)},
                     {"timeMs", rounded(query.timeMs)},
                     {"answeredBy", text(query.answeredBy)},
                     {"error", text(query.error)}},
                    query.source);
}

Json serverNameObject(const ServerName& name) {
  return withSource({{"server", std::string(name.server)},
                     {"name", text(name.name)},
                     {"error", text(name.error)}},
                    name.source);
}

Json pingObject(const Ping& ping) {
  return withSource({{"kind", ping.isCity ? "city" : "website"},
                     {"name", ping.name},
                     {"host", std::string(ping.host)},
                     {"address", text(ping.address)},
                     {"sent", value(ping.sent)},
                     {"received", value(ping.received)},
                     {"lossPercent", rounded(ping.lossPercent())},
                     {"minMs", rounded(ping.minMs())},
                     {"medianMs", rounded(ping.medianMs())},
                     {"maxMs", rounded(ping.maxMs())},
                     {"timesMs", ping.timesMs},
                     {"error", text(ping.error)}},
                    ping.source);
}

Json hopObject(const Hop& hop) {
  return {{"number", hop.number},   {"name", text(hop.name)}, {"address", text(hop.address)},
          {"timesMs", hop.timesMs}, {"lost", hop.lost},       {"note", text(hop.note)},
          {"line", hop.source.line}};
}

Json pathObject(const Path& path) {
  const auto step = path.slowestStep();
  const Hop* end = path.end();
  return withSource(
      {{"host", std::string(path.host)},
       {"address", text(path.address)},
       {"reached", path.address.empty() ? Json(nullptr) : Json(path.isReached())},
       {"hops", listOf(path.hops, hopObject)},
       {"slowestStep",
        step ? Json{{"hop", step->first}, {"ms", rounded(step->second)}} : Json(nullptr)},
       {"end", end == nullptr ? Json(nullptr) : Json(end->number)},
       {"error", text(path.error)}},
      path.source);
}

std::string_view nameOf(WebCheck::Kind kind) {
  switch (kind) {
    case WebCheck::Kind::nothing:
      return "none";
    case WebCheck::Kind::expected:
      return "expected";
    case WebCheck::Kind::blockPage:
      return "block page";
    case WebCheck::Kind::otherPage:
      return "other page";
    case WebCheck::Kind::unknown:
      break;
  }
  return "unknown";
}

Json webCheckObject(const WebCheck& check) {
  return withSource({{"key", check.key},
                     {"url", std::string(check.url)},
                     {"status", value(check.status)},
                     {"redirects", texts(check.redirects)},
                     {"title", text(check.title)},
                     {"text", text(check.text)},
                     {"answer", nameOf(check.kind)},
                     {"error", text(check.error)}},
                    check.source);
}

std::string_view nameOf(Interface::Kind kind) {
  switch (kind) {
    case Interface::Kind::loopback:
      return "loopback";
    case Interface::Kind::ethernet:
      return "ethernet";
    case Interface::Kind::tunnel:
      return "tunnel";
    case Interface::Kind::other:
      break;
  }
  return "other";
}

Json interfaceObject(const Interface& interface) {
  return withSource({{"name", std::string(interface.name)},
                     {"kind", nameOf(interface.kind)},
                     {"up", interface.isUp},
                     {"mtu", value(interface.mtu)},
                     {"addresses", texts(interface.addresses)}},
                    interface.source);
}

Json routeObject(const Route& route) {
  return withSource({{"destination", std::string(route.destination)},
                     {"gateway", text(route.gateway)},
                     {"interface", text(route.interface)},
                     {"flags", std::string(route.flags)},
                     {"default", route.isDefault},
                     {"family", route.isIpv6 ? "ipv6" : "ipv4"}},
                    route.source);
}

Json withOptionalSource(Json fact, const std::optional<Source>& source) {
  fact["block"] = source ? Json(source->block) : Json(nullptr);
  fact["line"] = source ? Json(source->line) : Json(nullptr);
  return fact;
}

Json systemObject(const System& system) {
  return withOptionalSource({{"version", text(system.version)},
                             {"kernel", text(system.kernel)},
                             {"computer", text(system.computer)},
                             {"user", text(system.user)},
                             {"timeSinceBoot", text(system.timeSinceBoot)},
                             {"clock", text(system.clock)},
                             {"serverClock", text(system.serverClock)}},
                            system.source);
}

Json logsObject(const SkivraLogs& logs) {
  return {{"folder", std::string(logs.folder)},
          {"number", logs.count},
          {"bytes", logs.bytes},
          {"oldest", text(logs.oldest)},
          {"newest", text(logs.newest)},
          {"firstBlock", logs.firstBlock},
          {"lastBlock", logs.lastBlock}};
}

std::string_view nameOf(Skivra::File file) {
  switch (file) {
    case Skivra::File::present:
      return "present";
    case Skivra::File::missing:
      return "missing";
    case Skivra::File::unknown:
      break;
  }
  return "unknown";
}

Json isSkivraInUse(const Facts& facts) {
  if (facts.nameServers.empty()) {
    return nullptr;
  }
  return std::ranges::any_of(facts.nameServers, [](const NameServer& server) {
    return isLoopbackAddress(server.address);
  });
}

Json skivraObject(const Facts& facts) {
  const Skivra& skivra = facts.skivra;
  const Query* query = facts.query("skivra-debug");
  return withOptionalSource(
      {{"installed", value(skivra.isInstalled)},
       {"stateFile", nameOf(skivra.stateFile)},
       {"state", text(skivra.state)},
       {"organization", text(skivra.organization)},
       {"resolverAnswers", query == nullptr ? Json(nullptr) : Json(query->isAnswered())},
       {"inUse", isSkivraInUse(facts)},
       {"originalNameServers", texts(skivra.originalNameServers)},
       {"localDomains", texts(skivra.localDomains)},
       {"logs", listOf(skivra.logs, logsObject)}},
      skivra.stateSource);
}

}  // namespace

Json factsObject(const ReportReading& reading) {
  const Facts& facts = reading.facts;
  return {{"domain", text(facts.domain)},
          {"resolvers", listOf(facts.resolvers, resolverObject)},
          {"publicAddresses", listOf(facts.publicAddresses, publicAddressObject)},
          {"resolverAddresses", listOf(facts.resolverAddresses, resolverAddressObject)},
          {"nameServers", listOf(facts.nameServers, nameServerObject)},
          {"queries", listOf(facts.queries, queryObject)},
          {"serverNames", listOf(facts.serverNames, serverNameObject)},
          {"cities", listOf(facts.pings, pingObject)},
          {"paths", listOf(facts.paths, pathObject)},
          {"webChecks", listOf(facts.webChecks, webCheckObject)},
          {"interfaces", listOf(facts.interfaces, interfaceObject)},
          {"routes", listOf(facts.routes, routeObject)},
          {"system", systemObject(facts.system)},
          {"skivra", skivraObject(facts)}};
}

}  // namespace reader
