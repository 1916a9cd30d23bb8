// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "reader/output/json_facts.h"

#include <nlohmann/json.hpp>

#include <cmath>

namespace reader {

NLOHMANN_JSON_SERIALIZE_ENUM(WebCheck::Kind, {{WebCheck::Kind::unknown, "unknown"},
                                              {WebCheck::Kind::nothing, "none"},
                                              {WebCheck::Kind::expected, "expected"},
                                              {WebCheck::Kind::blockPage, "block page"},
                                              {WebCheck::Kind::otherPage, "other page"}})
NLOHMANN_JSON_SERIALIZE_ENUM(Interface::Kind, {{Interface::Kind::other, "other"},
                                               {Interface::Kind::loopback, "loopback"},
                                               {Interface::Kind::ethernet, "ethernet"},
                                               {Interface::Kind::tunnel, "tunnel"}})
NLOHMANN_JSON_SERIALIZE_ENUM(Skivra::File, {{Skivra::File::unknown, "unknown"},
                                            {Skivra::File::present, "present"},
                                            {Skivra::File::missing, "missing"}})

namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t textMax = 500;

/// Unknown facts are null.
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

Json withSource(Json fact, const std::optional<Source>& source) {
  fact["block"] = source ? Json(source->block) : Json(nullptr);
  fact["line"] = source ? Json(source->line) : Json(nullptr);
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

Json texts(const std::vector<std::string_view>& values) {
  return listOf(values, [](std::string_view each) { return Json(each.substr(0, textMax)); });
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
  return withSource(
      {{"address", address.address}, {"by", address.by}, {"server", text(address.server)}},
      address.source);
}

Json resolverAddressObject(const PublicAddress& address) {
  return withSource({{"address", address.address}, {"by", std::string(address.by)}},
                    address.source);
}

Json nameServerObject(const NameServer& server) {
  return withSource({{"address", server.address},
                     {"resolver", value(server.resolver)},
                     {"interface", text(server.interface)},
                     {"domain", text(server.domain)}},
                    server.source);
}

Json queryObject(const Query& query) {
  const auto answer = [](const Answer& each) {
    return Json{{"name", each.name},
                {"type", each.type},
                {"data", std::string(each.data.substr(0, textMax))},
                {"line", each.source.line}};
  };
  return withSource({{"key", query.key},
                     {"name", query.name},
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
  return withSource(
      {{"server", name.server}, {"name", text(name.name)}, {"error", text(name.error)}},
      name.source);
}

Json pingObject(const Ping& ping) {
  return withSource({{"kind", ping.isCity ? "city" : "website"},
                     {"name", ping.name},
                     {"host", ping.host},
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
      {{"host", path.host},
       {"address", text(path.address)},
       {"reached", path.address.empty() ? Json(nullptr) : Json(path.isReached())},
       {"hops", listOf(path.hops, hopObject)},
       {"slowestStep",
        step ? Json{{"hop", step->first}, {"ms", rounded(step->second)}} : Json(nullptr)},
       {"end", end == nullptr ? Json(nullptr) : Json(end->number)},
       {"error", text(path.error)}},
      path.source);
}

Json webCheckObject(const WebCheck& check) {
  return withSource({{"key", check.key},
                     {"url", check.url},
                     {"status", value(check.status)},
                     {"redirects", texts(check.redirects)},
                     {"title", text(check.title)},
                     {"text", text(check.text)},
                     {"answer", check.kind},
                     {"error", text(check.error)}},
                    check.source);
}

Json interfaceObject(const Interface& interface) {
  return withSource({{"name", interface.name},
                     {"kind", interface.kind},
                     {"up", interface.isUp},
                     {"mtu", value(interface.mtu)},
                     {"addresses", texts(interface.addresses)}},
                    interface.source);
}

Json routeObject(const Route& route) {
  return withSource({{"destination", route.destination},
                     {"gateway", text(route.gateway)},
                     {"interface", text(route.interface)},
                     {"flags", route.flags},
                     {"default", route.isDefault},
                     {"family", route.isIpv6 ? "ipv6" : "ipv4"}},
                    route.source);
}

Json systemObject(const System& system) {
  return withSource({{"version", text(system.version)},
                     {"kernel", text(system.kernel)},
                     {"computer", text(system.computer)},
                     {"user", text(system.user)},
                     {"timeSinceBoot", text(system.timeSinceBoot)},
                     {"clock", text(system.clock)},
                     {"serverClock", text(system.serverClock)}},
                    system.source);
}

Json logsObject(const SkivraLogs& logs) {
  return {{"folder", logs.folder},       {"number", logs.count},
          {"bytes", logs.bytes},         {"oldest", text(logs.oldest)},
          {"newest", text(logs.newest)}, {"firstBlock", logs.firstBlock},
          {"lastBlock", logs.lastBlock}};
}

Json skivraObject(const Facts& facts) {
  const Skivra& skivra = facts.skivra;
  const Query* query = facts.query("skivra-debug");
  return withSource(
      {{"installed", value(skivra.isInstalled)},
       {"stateFile", skivra.stateFile},
       {"state", text(skivra.state)},
       {"organization", text(skivra.organization)},
       {"resolverAnswers", query == nullptr ? Json(nullptr) : Json(query->isAnswered())},
       {"inUse", value(facts.usesSkivra())},
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
