// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Something that takes the machine's traffic elsewhere.

#include <algorithm>
#include <map>

#include "reader/parse/lines.h"
#include "reader/rules/questions.h"
#include "reader/rules/rule.h"

namespace reader {

namespace {

/// The routes that traffic takes: the first of those that lead everywhere, as the others are spare
/// ones, and the second halves, as what leads to a half goes before what leads everywhere. macOS
/// has routes for IPv6 through tunnels of its own that nobody has set up.
std::vector<const Route*> waysOut(const Facts& facts) {
  std::vector<const Route*> ways;
  bool isFirstFound = false;
  for (const Route& route : facts.routes) {
    if (!route.isDefault || route.isIpv6) {
      continue;
    }
    const bool isSecondHalf = route.destination.starts_with("128.");
    if (isSecondHalf || !isFirstFound) {
      ways.push_back(&route);
    }
    isFirstFound |= !isSecondHalf;
  }
  return ways;
}

/// A modem's line is an interface of the same name (ppp0) as a tunnel. What goes through a tunnel
/// leaves the machine by another interface, and its address is that of somebody's own network.
bool isModem(const Facts& facts, const Interface& interface) {
  const auto isWayBelow = [&](const Route& route) {
    return route.interface != interface.name && contains(route.flags, "G");
  };
  return interface.name.starts_with("ppp") &&
         !(std::ranges::any_of(interface.addresses, isPrivateAddress) &&
           std::ranges::any_of(facts.routes, isWayBelow));
}

std::optional<Finding> findVpn(const Facts& facts) {
  std::map<std::string_view, const Interface*> interfaces;
  for (const Interface& interface : facts.interfaces) {
    interfaces.emplace(interface.name, &interface);
  }
  for (const Route* route : waysOut(facts)) {
    const auto found = interfaces.find(route->interface);
    const Interface* interface = found == interfaces.end() ? nullptr : found->second;
    if (interface == nullptr || interface->kind != Interface::Kind::tunnel ||
        isModem(facts, *interface)) {
      continue;
    }
    return Finding{
        .text = "A VPN takes the machine's traffic: the way out is the tunnel " +
                std::string(interface->name) + ".",
        .meaning =
            "The service sees the VPN's address in place of the customer's, and the VPN may "
            "use resolvers of its own, so the filtering may not apply.",
        .advice =
            "Turn the VPN off and run the diagnostic again, or have it leave name resolution "
            "to the service.",
        .evidence = {route->source, interface->source}};
  }
  return std::nullopt;
}

std::optional<Finding> findProxy(const Facts& facts) {
  std::vector<Source> evidence;
  for (const WebCheck& check : facts.webChecks) {
    if (check.proxy) {
      evidence.push_back(*check.proxy);
    }
  }
  if (evidence.empty()) {
    return std::nullopt;
  }
  return Finding{.severity = Severity::warning,
                 .text = "Web requests go through a proxy.",
                 .meaning =
                     "The proxy looks names up itself, so web pages may not be filtered, and "
                     "it may answer in place of the servers.",
                 .advice =
                     "Ask who runs the network for the proxy's purpose, and have it use the "
                     "service's resolvers.",
                 .evidence = evidence};
}

const RegisteredRule vpn({.id = "vpn",
                          .rank = 200,
                          .subject = Subject::machine,
                          .explains = {"service-not-used", "skivra-not-used", "high-delay"},
                          .find = findVpn});
const RegisteredRule proxy({.id = "proxy", .rank = 700, .find = findProxy});

}  // namespace

}  // namespace reader
