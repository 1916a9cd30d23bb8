// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Something that takes the machine's traffic elsewhere.

#include <algorithm>

#include "reader/rules/questions.h"
#include "reader/rules/rule.h"

namespace reader {

namespace {

const Interface* interfaceOf(const Facts& facts, const Route& route) {
  const auto found = std::ranges::find(facts.interfaces, route.interface, &Interface::name);
  return found == facts.interfaces.end() ? nullptr : &*found;
}

std::optional<Finding> findVpn(const Facts& facts) {
  for (const Route& route : facts.routes) {
    const Interface* interface = route.isDefault ? interfaceOf(facts, route) : nullptr;
    // macOS has routes for IPv6 through tunnels of its own that nobody has set up.
    if (interface == nullptr || interface->kind != Interface::Kind::tunnel || route.isIpv6) {
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
        .evidence = {route.source, interface->source}};
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
