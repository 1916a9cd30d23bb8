// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// What a report says, in a form that rules can ask: each fact with the line that it comes from.
// Texts are views into the report.

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "diagnostics/endpoints.h"
#include "reader/facts/name_servers.h"

namespace reader {

/// Echo requests to a host.
struct Ping {
  std::string_view key{};
  /// The city, or the host where there is none.
  std::string name{};
  bool isCity = false;
  std::string_view host{};
  std::string_view address{};
  std::optional<int> sent{};
  std::optional<int> received{};
  std::vector<double> timesMs{};
  /// Why there is no result, or what came back instead of an answer.
  std::string_view error{};
  /// The line with the count, or with the error.
  Source source{};

  std::optional<double> lossPercent() const;
  std::optional<double> minMs() const;
  std::optional<double> medianMs() const;
  std::optional<double> maxMs() const;
};

/// Who answered a probe, and what was noted, such as "!H".
struct HopHost {
  std::string_view address{};
  std::string_view note{};
};

struct Hop {
  int number = 0;
  /// The first host that answered, with its note; all empty if none did.
  std::string_view name{};
  std::string_view address{};
  std::vector<double> timesMs{};
  int lost = 0;
  std::string_view note{};
  /// Further hosts that answered, as where the ways part.
  std::vector<HopHost> others{};
  Source source{};
};

/// The way to a host.
struct Path {
  std::string_view key{};
  std::string_view host{};
  std::string_view address{};
  std::vector<Hop> hops{};
  std::string_view error{};
  /// The first line.
  Source source{};

  /// The last hop that answered; null if none did.
  const Hop* end() const;
  /// The host itself answered, if only that it takes no such probes.
  bool isReached() const;
  /// The hop where the round trip grows most, and by how much.
  std::optional<std::pair<int, double>> slowestStep() const;
};

/// What a web server answered.
struct WebCheck {
  enum class Kind { nothing, expected, blockPage, otherPage, unknown };

  std::string_view key{};
  std::string_view url{};
  std::optional<int> status{};
  std::vector<std::string_view> redirects{};
  std::string_view title{};
  /// The page's first line, and all of it without white space at both ends.
  std::string_view text{};
  std::string_view page{};
  std::string_view date{};
  /// It comes from a cache, so its date is that of an earlier time.
  bool isCached = false;
  Kind kind = Kind::unknown;
  std::string_view error{};
  Source source{};
  /// Of the first header or message that speaks of a proxy.
  std::optional<Source> proxy{};
};

struct Interface {
  enum class Kind { loopback, ethernet, tunnel, other };

  std::string_view name{};
  Kind kind = Kind::other;
  bool isUp = false;
  std::optional<int> mtu{};
  std::vector<std::string_view> addresses{};
  Source source{};
};

struct Route {
  std::string_view destination{};
  /// Empty if the destination is on the link itself.
  std::string_view gateway{};
  std::string_view interface{};
  std::string_view flags{};
  /// It leads everywhere, or to a half of it, whatever is sent.
  bool isDefault = false;
  bool isIpv6 = false;
  Source source{};
};

struct System {
  std::string_view version{};
  std::string_view kernel{};
  std::string_view computer{};
  std::string_view user{};
  std::string_view timeSinceBoot{};
  /// The machine's time as dig prints it, and that of a web server.
  std::string_view clock{};
  std::string_view serverClock{};
  std::optional<Source> clockSource{};
  std::optional<Source> serverClockSource{};
  std::optional<Source> source{};
};

/// The logs of one of the Skivra's folders.
struct SkivraLogs {
  std::string_view folder{};
  int count = 0;
  std::size_t bytes = 0;
  std::string_view oldest{};
  std::string_view newest{};
  std::size_t firstBlock = 0;
  std::size_t lastBlock = 0;
};

struct Skivra {
  enum class File { unknown, present, missing };

  /// Whether its folder is there; nothing if the report does not say.
  std::optional<bool> isInstalled{};
  File stateFile = File::unknown;
  std::string_view state{};
  std::string_view organization{};
  std::vector<std::string_view> originalNameServers{};
  std::vector<std::string_view> localDomains{};
  std::vector<SkivraLogs> logs{};
  std::optional<Source> stateSource{};
  std::optional<Source> folderSource{};
};

/// A tool that printed something else than its result.
struct ToolError {
  std::string_view kind{};
  Source source{};
};

/// All that was read. `endpoints` are those of the plan.
struct Facts {
  diagnostics::Endpoints endpoints{};
  std::string_view domain{};
  std::vector<Query> queries{};
  std::vector<Resolver> resolvers{};
  std::vector<ServerName> serverNames{};
  std::vector<PublicAddress> publicAddresses{};
  std::vector<PublicAddress> resolverAddresses{};
  std::vector<NameServer> nameServers{};
  std::vector<Ping> pings{};
  std::vector<Path> paths{};
  std::vector<WebCheck> webChecks{};
  std::vector<Interface> interfaces{};
  std::vector<Route> routes{};
  System system{};
  Skivra skivra{};
  std::vector<ToolError> toolErrors{};
  /// The lists were in the report, as a whole, so that what is not in them is not there.
  std::optional<Source> interfaceList{};
  std::optional<Source> routeList{};
  std::optional<Source> nameServerList{};

  const Query* query(std::string_view key) const;
  const Path* path(std::string_view key) const;
  const Ping* ping(std::string_view key) const;
  const WebCheck* webCheck(std::string_view key) const;
  const Resolver* resolver(std::string_view key) const;
  /// Whether the machine asks a name server on itself; nothing if the report does not say.
  std::optional<bool> usesSkivra() const;
};

/// A network of one's own, or of nobody: 10.0.0.0/8, fc00::/7 and the like.
bool isPrivateAddress(std::string_view address);
bool isLoopbackAddress(std::string_view address);
/// An address that an interface gives itself when nobody gives it one.
bool isLinkLocalAddress(std::string_view address);
bool isIpv4Address(std::string_view text);

}  // namespace reader
