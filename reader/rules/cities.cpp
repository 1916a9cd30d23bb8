// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// One city that is slow or silent, while its neighbours are not.

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "reader/rules/questions.h"
#include "reader/rules/rule.h"

namespace reader {

namespace {

struct Place {
  std::string_view city;
  double latitude = 0;
  double longitude = 0;
};

constexpr auto places = std::to_array<Place>({
    {"palo alto", 37.4, -122.1},    {"seattle", 47.6, -122.3},  {"los angeles", 34.1, -118.2},
    {"chicago", 41.9, -87.6},       {"new york", 40.7, -74.0},  {"ashburn", 39.0, -77.5},
    {"london", 51.5, -0.1},         {"miami", 25.8, -80.2},     {"singapore", 1.4, 103.8},
    {"frankfurt", 50.1, 8.7},       {"hong kong", 22.3, 114.2}, {"amsterdam", 52.4, 4.9},
    {"berlin", 52.5, 13.4},         {"paris", 48.9, 2.4},       {"copenhagen", 55.7, 12.6},
    {"dallas", 32.8, -96.8},        {"bucharest", 44.4, 26.1},  {"prague", 50.1, 14.4},
    {"washington dc", 38.9, -77.0}, {"warsaw", 52.2, 21.0},     {"sydney", -33.9, 151.2},
});

const Place* placeOf(std::string_view city) {
  const auto* const found = std::ranges::find(places, city, &Place::city);
  return found == places.end() ? nullptr : found;
}

double distanceKm(const Place& a, const Place& b) {
  const auto radians = [](double degrees) { return degrees * std::numbers::pi / 180; };
  constexpr double earthKm = 6371;
  const double cosine = std::sin(radians(a.latitude)) * std::sin(radians(b.latitude)) +
                        std::cos(radians(a.latitude)) * std::cos(radians(b.latitude)) *
                            std::cos(radians(a.longitude - b.longitude));
  return earthKm * std::acos(std::clamp(cosine, -1.0, 1.0));
}

/// How long the round trip to a city may take if the one to another city takes `otherMs`: there and
/// on. Light in glass makes 100 km of a round trip in a millisecond; cables are no straight lines.
double usualMsMax(double otherMs, double km) {
  constexpr double detour = 2.5;
  constexpr double slackMs = 100;
  return otherMs + detour * km / 100 + slackMs;
}

/// The neighbour from which one could be there much sooner; null if there is none.
const Ping* fasterNeighbour(const Facts& facts, const Ping& slow) {
  // Where packets get lost, the best of one or two round trips may be late by chance. To be early
  // by chance is not possible: of the neighbour, one is enough.
  constexpr std::size_t receivedMin = 3;
  const Place* place = placeOf(slow.name);
  if (place == nullptr || slow.timesMs.size() < receivedMin) {
    return nullptr;
  }
  const Ping* fastest = nullptr;
  double fastestMs = *slow.minMs();
  for (const Ping& other : facts.pings) {
    const Place* otherPlace = placeOf(other.name);
    if (otherPlace == nullptr || !other.minMs()) {
      continue;
    }
    const double usual = usualMsMax(*other.minMs(), distanceKm(*place, *otherPlace));
    if (usual < fastestMs) {
      fastest = &other;
      fastestMs = usual;
    }
  }
  return fastest;
}

std::optional<Finding> findSlowCity(const Facts& facts) {
  std::vector<std::string> cities;
  std::vector<Source> evidence;
  for (const Ping& ping : facts.pings) {
    const Ping* neighbour = fasterNeighbour(facts, ping);
    if (neighbour == nullptr) {
      continue;
    }
    cities.push_back(ping.name + " (" + shown(*ping.minMs()) + " ms, " + neighbour->name + " " +
                     shown(*neighbour->minMs()) + " ms)");
    evidence.push_back(ping.source);
    evidence.push_back(neighbour->source);
  }
  if (cities.empty()) {
    return std::nullopt;
  }
  Finding finding{
      .text =
          "Round trips take much longer than to its neighbours towards " + enumerated(cities) + ".",
      .meaning = "What is served from there is slow. Other places of the service are not affected.",
      .advice =
          "Run the diagnostic again later. If it stays, show the provider and the service's "
          "network staff this report: they can lead the traffic another way."};
  addEvidence(finding.evidence, evidence, 8);
  return finding;
}

/// Where most hosts lose many packets, a host may lose all of its few by chance.
bool isLossLarge(const Facts& facts) {
  constexpr double rateMin = 0.25;
  const auto asked =
      std::ranges::count_if(facts.pings, [](const Ping& ping) { return ping.sent > 0; });
  const auto lossy = std::ranges::count_if(
      facts.pings, [](const Ping& ping) { return ping.received > 0 && ping.lossPercent() > 0; });
  return lossRate(facts) >= rateMin && 2 * lossy > asked;
}

std::optional<Finding> findSilentCity(const Facts& facts) {
  std::vector<std::string> silent;
  std::vector<Source> evidence;
  bool isAnyAnswering = false;
  bool areCities = true;
  for (const Ping& ping : facts.pings) {
    isAnyAnswering |= ping.received > 0;
    if (ping.sent > 0 && ping.received == 0) {
      silent.push_back(ping.name);
      areCities &= ping.isCity;
      evidence.push_back(ping.source);
    }
  }
  if (silent.empty() || !isAnyAnswering || isLossLarge(facts)) {
    return std::nullopt;
  }
  Finding finding{.text = "Nothing comes back from " + enumerated(silent) + ", while other " +
                          (areCities ? "cities" : "hosts") + " answer.",
                  .meaning =
                      "What is served from there cannot be reached, or is served from "
                      "farther away.",
                  .advice =
                      "Run the diagnostic again later. If it stays, show the service's "
                      "network staff this report."};
  addEvidence(finding.evidence, evidence, 6);
  return finding;
}

std::optional<Finding> findFilteredPings(const Facts& facts) {
  std::vector<Source> evidence;
  for (const Ping& ping : facts.pings) {
    if (ping.received > 0) {
      return std::nullopt;
    }
    if (ping.sent > 0) {
      evidence.push_back(ping.source);
    }
  }
  if (evidence.empty() || !anythingAnswers(facts)) {
    return std::nullopt;
  }
  Finding finding{.severity = Severity::warning,
                  .text = "No host answers a ping, though other questions are answered.",
                  .meaning =
                      "The network lets no echo requests through. That alone harms nobody, "
                      "but nothing can be said about loss and delay.",
                  .advice = "Run the diagnostic from another network to measure these."};
  addEvidence(finding.evidence, evidence, 3);
  return finding;
}

const RegisteredRule slowCity({.id = "slow-city", .rank = 330, .find = findSlowCity});
const RegisteredRule silentCity({.id = "silent-city", .rank = 340, .find = findSilentCity});
const RegisteredRule filteredPings({.id = "pings-filtered",
                                    .rank = 345,
                                    .explains = {"path-ends-early"},
                                    .find = findFilteredPings});

}  // namespace

}  // namespace reader
