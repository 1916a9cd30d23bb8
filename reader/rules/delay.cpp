// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Round trips that take long everywhere, or now and then.

#include <algorithm>

#include "reader/rules/questions.h"
#include "reader/rules/rule.h"

namespace reader {

namespace {

// From any place of the earth, one of the cities is nearer than that.
constexpr double nearestMsMax = 250;
constexpr double spreadMsMax = 150;
constexpr std::size_t citiesMin = 5;

std::vector<const Ping*> measuredCities(const Facts& facts) {
  std::vector<const Ping*> cities;
  for (const Ping& ping : facts.pings) {
    if (ping.isCity && !ping.timesMs.empty()) {
      cities.push_back(&ping);
    }
  }
  return cities;
}

std::optional<Finding> findHighDelay(const Facts& facts) {
  std::vector<const Ping*> cities = measuredCities(facts);
  if (cities.size() < citiesMin) {
    return std::nullopt;
  }
  std::ranges::sort(cities, {}, [](const Ping* ping) { return *ping->minMs(); });
  const double nearest = *cities.front()->minMs();
  if (nearest < nearestMsMax) {
    return std::nullopt;
  }
  Finding finding{
      .text = "Every round trip takes long: even the nearest city, " + cities.front()->name +
              ", is " + shown(nearest) + " ms away.",
      .meaning = "Every lookup of a name and every page waits that long, some of them many times.",
      .advice =
          "Ask whether the connection goes over a satellite or a mobile network, whether a "
          "tunnel is in the way, and whether something else fills the line."};
  for (std::size_t i = 0; i < 3; ++i) {
    finding.evidence.push_back(cities[i]->source);
  }
  return finding;
}

/// How far apart the round trips are, but for the longest one: the first may wait for many things.
double spreadMs(const Ping& ping) {
  std::vector<double> times = ping.timesMs;
  std::ranges::sort(times);
  return times.size() < 3 ? 0 : times[times.size() - 2] - times.front();
}

std::optional<Finding> findUnevenDelay(const Facts& facts) {
  const std::vector<const Ping*> cities = measuredCities(facts);
  std::vector<Source> evidence;
  double widest = 0;
  for (const Ping* ping : cities) {
    if (spreadMs(*ping) > spreadMsMax) {
      evidence.push_back(ping->source);
      widest = std::max(widest, *ping->maxMs() - *ping->minMs());
    }
  }
  if (cities.size() < citiesMin || 2 * evidence.size() < cities.size()) {
    return std::nullopt;
  }
  Finding finding{
      .text = "Round trips are very uneven: towards " + std::to_string(evidence.size()) + " of " +
              std::to_string(cities.size()) + " cities they differ by up to " + shown(widest) +
              " ms.",
      .meaning = "Pages sometimes load at once and sometimes after seconds; calls break up.",
      .advice =
          "Try a cable in place of the wireless network, and run the diagnostic again when "
          "nobody else uses the line."};
  addEvidence(finding.evidence, evidence, 4);
  return finding;
}

const RegisteredRule highDelay({.id = "high-delay", .rank = 310, .find = findHighDelay});
const RegisteredRule unevenDelay(
    {.id = "uneven-delay", .rank = 320, .explains = {"slow-city"}, .find = findUnevenDelay});

}  // namespace

}  // namespace reader
