// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Packets that get lost: how many, and from where on.

#include <algorithm>
#include <cstdint>
#include <map>

#include "reader/rules/questions.h"
#include "reader/rules/rule.h"

namespace reader {

namespace {

// A single one may get lost on any line.
constexpr int lostMin = 4;
constexpr double rateMin = 0.03;
// Many a router answers not all of the probes that end at it.
constexpr int lostAtHopMin = 3;

struct HopCount {
  int probes = 0;
  int lost = 0;
  std::string_view address{};
  Source source{};
};

/// By the hop's number, over all paths to the service. Hops that answered nothing are left out:
/// some never do.
std::map<int, HopCount> countHops(const Facts& facts) {
  std::map<int, HopCount> counts;
  for (const Path& path : facts.paths) {
    if (!path.isReached()) {
      continue;
    }
    for (const Hop& hop : path.hops) {
      if (hop.address.empty()) {
        continue;
      }
      HopCount& count = counts[hop.number];
      count.probes += static_cast<int>(hop.timesMs.size()) + hop.lost;
      count.lost += hop.lost;
      if (hop.lost > 0 && count.lost == hop.lost) {  // the first path that shows it
        count.address = hop.address;
        count.source = hop.source;
      }
    }
  }
  return counts;
}

/// The first hop that loses packets as those behind it do, taken together; null if there is none.
const HopCount* firstLossyHop(const std::map<int, HopCount>& counts, double rate) {
  const double lossMin = rate / 4;
  for (auto hop = counts.begin(); hop != counts.end(); ++hop) {
    HopCount rest;
    for (auto behind = hop; behind != counts.end(); ++behind) {
      rest.probes += behind->second.probes;
      rest.lost += behind->second.lost;
    }
    const HopCount& count = hop->second;
    if (count.lost >= lostAtHopMin && count.lost >= lossMin * count.probes &&
        rest.lost >= lossMin * rest.probes) {
      return &count;
    }
  }
  return nullptr;
}

std::vector<Source> lossyPings(const Facts& facts) {
  std::vector<Source> sources;
  for (const Ping& ping : facts.pings) {
    if (ping.received > 0 && ping.lossPercent() > 0) {
      sources.push_back(ping.source);
    }
  }
  return sources;
}

std::optional<Finding> find(const Facts& facts) {
  // Numbers of a forged report may be as large as they fit.
  std::int64_t lost = 0;
  int hosts = 0;
  for (const Ping& ping : facts.pings) {
    if (ping.received > 0) {
      lost += std::max(0, ping.sent.value_or(0) - *ping.received);
      ++hosts;
    }
  }
  const double rate = lossRate(facts);
  const std::vector<Source> lossy = lossyPings(facts);
  // One of several hosts may lose its packets itself.
  const bool isThatOfOneHost = lossy.size() == 1 && hosts > 1;
  if (lost < lostMin || rate < rateMin || isThatOfOneHost) {
    return std::nullopt;
  }
  Finding finding{.text = shown(100 * rate) + " % of the packets get lost, towards " +
                          std::to_string(lossy.size()) + " of " + std::to_string(hosts) + " hosts",
                  .meaning = "Pages load slowly or not at all, and lookups of names take seconds.",
                  .advice =
                      "Try a cable in place of the wireless network. If the loss begins behind the "
                      "customer's router, the provider has to look for it."};
  addEvidence(finding.evidence, lossy, 4);
  const std::map<int, HopCount> counts = countHops(facts);
  if (const HopCount* first = firstLossyHop(counts, rate)) {
    const bool isFirst = first == &counts.begin()->second;
    finding.text += isFirst ? ", from the first hop on: in the local network"
                            : ", from the hop " + std::string(first->address) + " on";
    finding.evidence.push_back(first->source);
  }
  finding.text += '.';
  return finding;
}

const RegisteredRule rule({.id = "packet-loss",
                           .rank = 300,
                           .explains = {"path-ends-early", "web-check-fails", "uneven-delay"},
                           .find = find});

}  // namespace

}  // namespace reader
