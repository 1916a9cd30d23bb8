// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "reader/facts/facts.h"

#include <algorithm>
#include <array>

#include "reader/parse/lines.h"

namespace reader {

namespace {

template <typename Fact>
const Fact* withKey(const std::vector<Fact>& facts, std::string_view key) {
  const auto found = std::ranges::find(facts, key, &Fact::key);
  return found == facts.end() ? nullptr : &*found;
}

/// The four numbers of an IPv4 address.
std::optional<std::array<int, 4>> ipv4(std::string_view text) {
  std::array<int, 4> parts{};
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const std::size_t end = i + 1 < parts.size() ? text.find('.') : text.size();
    if (end == std::string_view::npos) {
      return std::nullopt;
    }
    const std::optional<int> part = wholeNumber(text.substr(0, end));
    if (!part || *part > 255) {
      return std::nullopt;
    }
    parts[i] = *part;
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return parts;
}

/// Whether a note says more than that an administrator forbade the probe.
bool isUnreachable(std::string_view note) {
  constexpr std::array<std::string_view, 4> harmless{"", "!X", "!A", "!Z"};
  return std::ranges::find(harmless, note) == harmless.end();
}

}  // namespace

std::optional<double> Ping::lossPercent() const {
  if (!sent || !received || *sent == 0) {
    return std::nullopt;
  }
  return std::max(0.0, 100.0 * (*sent - *received) / *sent);
}

std::optional<double> Ping::minMs() const {
  return timesMs.empty() ? std::nullopt : std::optional(*std::ranges::min_element(timesMs));
}

std::optional<double> Ping::medianMs() const {
  if (timesMs.empty()) {
    return std::nullopt;
  }
  std::vector<double> sorted = timesMs;
  std::ranges::sort(sorted);
  const std::size_t half = sorted.size() / 2;
  return sorted.size() % 2 == 1 ? sorted[half] : (sorted[half - 1] + sorted[half]) / 2;
}

std::optional<double> Ping::maxMs() const {
  return timesMs.empty() ? std::nullopt : std::optional(*std::ranges::max_element(timesMs));
}

const Hop* Path::end() const {
  const auto last =
      std::find_if(hops.rbegin(), hops.rend(), [](const Hop& hop) { return !hop.address.empty(); });
  return last == hops.rend() ? nullptr : &*last;
}

bool Path::isReached() const {
  const auto isItself = [this](std::string_view by, std::string_view note) {
    return !by.empty() && by == address && !isUnreachable(note);
  };
  return std::ranges::any_of(hops, [&](const Hop& hop) {
    return isItself(hop.address, hop.note) ||
           std::ranges::any_of(hop.others, [&](const HopHost& other) {
             return isItself(other.address, other.note);
           });
  });
}

std::optional<std::pair<int, double>> Path::slowestStep() const {
  std::optional<std::pair<int, double>> slowest;
  double before = 0;
  for (const Hop& hop : hops) {
    if (hop.timesMs.empty()) {
      continue;
    }
    const double time = *std::ranges::min_element(hop.timesMs);
    if (!slowest || time - before > slowest->second) {
      slowest = {hop.number, time - before};
    }
    before = time;
  }
  return slowest;
}

const Query* Facts::query(std::string_view key) const {
  return withKey(queries, key);
}
const Path* Facts::path(std::string_view key) const {
  return withKey(paths, key);
}
const Ping* Facts::ping(std::string_view key) const {
  return withKey(pings, key);
}
const WebCheck* Facts::webCheck(std::string_view key) const {
  return withKey(webChecks, key);
}
const Resolver* Facts::resolver(std::string_view key) const {
  return withKey(resolvers, key);
}

bool isIpv4Address(std::string_view text) {
  return ipv4(text).has_value();
}

bool isLoopbackAddress(std::string_view address) {
  const auto parts = ipv4(address);
  return (parts && (*parts)[0] == 127) || address == "::1";
}

bool isLinkLocalAddress(std::string_view address) {
  const auto parts = ipv4(address);
  return (parts && (*parts)[0] == 169 && (*parts)[1] == 254) ||
         lowered(address.substr(0, 4)) == "fe80";
}

std::optional<bool> Facts::usesSkivra() const {
  if (nameServers.empty()) {
    return std::nullopt;
  }
  return std::any_of(nameServers.begin(), nameServers.end(),
                     [](const NameServer& server) { return isLoopbackAddress(server.address); });
}

bool isPrivateAddress(std::string_view address) {
  if (const auto parts = ipv4(address)) {
    const auto [a, b, c, d] = *parts;
    return a == 10 || a == 127 || a == 0 || (a == 172 && b >= 16 && b < 32) ||
           (a == 192 && b == 168) || (a == 169 && b == 254) || (a == 100 && b >= 64 && b < 128);
  }
  const std::string start = lowered(address.substr(0, 4));
  return contains(address, ":") && (start.starts_with("fc") || start.starts_with("fd") ||
                                    start == "fe80" || address == "::1" || address == "::");
}

}  // namespace reader
