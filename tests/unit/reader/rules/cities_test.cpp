// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Cities that are slow or silent, while others are not.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "report_text.h"

namespace reader {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

std::string same(double ms) {
  return pingOutput("192.0.2.102", {ms, ms, ms, ms, ms});
}

std::string keyOf(std::string city) {
  std::ranges::replace(city, ' ', '-');
  return "ping-" + city;
}

/// Nobody was pinged.
ReportText withoutPings() {
  ReportText report = ReportText::bare();
  return report.setAll("ping-", "");
}

const char* const unknownHost = "ping: host: Temporary failure in name resolution\n";

TEST(SlowCity, IsSlowerThanItsNeighbours) {
  ReportText report = ReportText::bare();
  report.set("ping-frankfurt", same(784));
  EXPECT_THAT(found(report), ElementsAre("slow-city"));
  EXPECT_EQ(firstText(report),
            "Round trips take much longer than to its neighbours towards frankfurt (784 ms, london "
            "84.5 ms).");
  EXPECT_THAT(firstEvidence(report),
              ElementsAre("ping-frankfurt: 5 packets transmitted, 5 received, 0% packet loss, "
                          "time 4006ms",
                          "ping-london: 5 packets transmitted, 5 received, 0% packet loss, time "
                          "4008ms"));
}

TEST(SlowCity, IsNotALittleSlower) {
  ReportText report = ReportText::bare();
  report.set("ping-frankfurt", same(150));
  EXPECT_THAT(found(report), IsEmpty());
}

// A city may take as long as the way over its neighbour, at 100 km in 2.5 ms, and 100 ms more.
TEST(SlowCity, MayBeAsLateAsItIsFarAway) {
  struct Pair {
    std::string city;
    std::string neighbour;
    double km;
  };
  const std::vector<Pair> pairs{
      {"palo alto", "hong kong", 11143.4},   {"seattle", "singapore", 12976.9},
      {"los angeles", "hong kong", 11648.4}, {"chicago", "paris", 6647.7},
      {"new york", "london", 5572.8},        {"ashburn", "paris", 6191.3},
      {"london", "hong kong", 9625.4},       {"miami", "paris", 7356.5},
      {"singapore", "bucharest", 8924.0},    {"frankfurt", "dallas", 8255.9},
      {"hong kong", "bucharest", 8150.3},    {"amsterdam", "chicago", 6603.0},
      {"berlin", "chicago", 7081.0},         {"paris", "hong kong", 9624.6},
      {"copenhagen", "chicago", 6836.6},     {"dallas", "seattle", 2698.8},
      {"bucharest", "new york", 7652.7},     {"prague", "dallas", 8590.5},
      {"washington dc", "paris", 6164.3},    {"warsaw", "ashburn", 7197.8},
      {"sydney", "prague", 16088.3},
  };
  for (const Pair& pair : pairs) {
    const double usualMsMax = 20 + 100 + pair.km * 2.5 / 100;
    ReportText report = withoutPings();
    report.set(keyOf(pair.neighbour), same(20));
    report.set(keyOf(pair.city), same(usualMsMax - 0.04));
    EXPECT_THAT(found(report), IsEmpty()) << pair.city;
    report.set(keyOf(pair.city), same(usualMsMax + 0.04));
    EXPECT_THAT(found(report), ElementsAre("slow-city")) << pair.city;
  }
}

TEST(SlowCity, IsNotLateByChance) {
  ReportText report = ReportText::bare();
  report.set("ping-frankfurt", pingOutput("192.0.2.110", {784, 785}));
  EXPECT_THAT(found(report), IsEmpty());
  report.set("ping-frankfurt", pingOutput("192.0.2.110", {784, 785, 786}));
  EXPECT_THAT(found(report), ElementsAre("slow-city"));
}

TEST(SlowCity, IsComparedWithAnyNeighbourThatAnswers) {
  ReportText report = withoutPings();
  report.set("ping-frankfurt", same(784)).set("ping-prague", pingOutput("192.0.2.118", {20}));
  EXPECT_THAT(found(report), ElementsAre("slow-city"));
  report.set("ping-prague", "", unknownHost);
  EXPECT_THAT(found(report), IsEmpty());
}

TEST(SlowCity, IsNoWebSite) {
  ReportText report = ReportText::bare();
  report.set("ping-website", same(784));
  EXPECT_THAT(found(report), IsEmpty());
}

TEST(SlowCity, ShowsTheLinesOfTheFirstFour) {
  ReportText report = ReportText::bare();
  for (const char* key :
       {"ping-seattle", "ping-berlin", "ping-prague", "ping-warsaw", "ping-frankfurt"}) {
    report.set(key, same(784));
  }
  EXPECT_THAT(found(report), ElementsAre("slow-city"));
  EXPECT_THAT(firstEvidence(report), SizeIs(8));
}

TEST(SilentCity, IsSilentWhileOthersAnswer) {
  ReportText report = ReportText::bare();
  report.set("ping-sydney", pingOutput("192.0.2.120", {}));
  EXPECT_THAT(found(report), ElementsAre("silent-city"));
  EXPECT_EQ(firstText(report), "Nothing comes back from sydney, while other cities answer.");
  EXPECT_THAT(firstEvidence(report),
              ElementsAre("ping-sydney: 5 packets transmitted, 0 received, 100% packet loss, time "
                          "4006ms"));
  report.set("ping-sydney", pingOutput("192.0.2.120", {300}));
  EXPECT_THAT(found(report), IsEmpty());
}

TEST(SilentCity, IsNotSilentByChance) {
  const auto lossy = [](std::size_t received, std::size_t sent) {
    return pingOutput("192.0.2.102", std::vector<double>(received, 20), sent);
  };
  ReportText report = withoutPings();
  report.set("ping-sydney", lossy(0, 4)).set("ping-miami", lossy(12, 16));
  report.set("ping-london", lossy(12, 16)).set("ping-prague", lossy(0, 0));
  EXPECT_THAT(found(report), ElementsAre("packet-loss"));
  report.set("ping-london", lossy(13, 16));
  EXPECT_THAT(found(report), ElementsAre("packet-loss", "silent-city"));
  // Neither half of the hosts nor one of them are most.
  report.set("ping-london", lossy(12, 16)).set("ping-berlin", lossy(0, 4));
  EXPECT_THAT(found(report), ElementsAre("packet-loss", "silent-city"));
  report.set("ping-london", lossy(16, 16)).set("ping-miami", lossy(8, 16)).set("ping-berlin", "");
  EXPECT_THAT(found(report), ElementsAre("silent-city"));
}

TEST(SilentCity, IsSilentWhileOneOtherAnswers) {
  ReportText report = withoutPings();
  report.set("ping-sydney", pingOutput("192.0.2.120", {}, 1));
  report.set("ping-miami", pingOutput("192.0.2.108", {20}, 1));
  EXPECT_THAT(found(report), ElementsAre("silent-city"));
  report.set("ping-miami", "", unknownHost);
  EXPECT_THAT(found(report), ElementsAre("warning pings-filtered"));
}

TEST(SilentCity, MayBeTheWebSite) {
  ReportText report = ReportText::bare();
  report.set("ping-website", pingOutput("203.0.113.10", {}));
  EXPECT_THAT(found(report), ElementsAre("silent-city"));
  EXPECT_EQ(firstText(report),
            "Nothing comes back from www.halvik.example, while other hosts answer.");
  report.set("ping-sydney", pingOutput("192.0.2.120", {}));
  EXPECT_EQ(firstText(report),
            "Nothing comes back from www.halvik.example and sydney, while other hosts answer.");
}

TEST(SilentCity, WasAsked) {
  ReportText report = ReportText::bare();
  report.set("ping-sydney", pingOutput("192.0.2.120", {}, 0));
  EXPECT_THAT(found(report), IsEmpty());
}

TEST(SilentCity, ShowsTheLinesOfTheFirstSix) {
  ReportText report = ReportText::bare();
  report.setAll("ping-", pingOutput("192.0.2.120", {})).set("ping-website", same(20));
  EXPECT_THAT(found(report), ElementsAre("silent-city"));
  EXPECT_THAT(firstEvidence(report), SizeIs(6));
}

TEST(FilteredPings, AreNoLoss) {
  ReportText report = ReportText::bare();
  report.setAll("ping-", pingOutput("192.0.2.102", {}));
  EXPECT_THAT(found(report), ElementsAre("warning pings-filtered"));
  EXPECT_EQ(firstText(report), "No host answers a ping, though other questions are answered.");
  const std::string counts = ": 5 packets transmitted, 0 received, 100% packet loss, time 4006ms";
  EXPECT_THAT(firstEvidence(report), ElementsAre("ping-website" + counts, "ping-palo-alto" + counts,
                                                 "ping-seattle" + counts));
}

TEST(FilteredPings, ExplainPathsWithoutAnEnd) {
  ReportText report = ReportText::bare();
  report.setAll("ping-", pingOutput("192.0.2.102", {}));
  report.set("path-category-hit",
             "traceroute to host (203.0.113.21), 30 hops max, 60 byte packets\n"
             " 1  192.168.1.1 (192.168.1.1)  1.1 ms  1.2 ms  1.3 ms\n 2  * * *\n");
  EXPECT_THAT(found(report), ElementsAre("warning pings-filtered"));
}

TEST(FilteredPings, AreShownBehindAnyProblem) {
  ReportText report = ReportText::bare();
  report.setAll("ping-", pingOutput("192.0.2.102", {})).set("web-monitor", "");
  EXPECT_THAT(found(report), ElementsAre("web-check-fails", "warning pings-filtered"));
}

TEST(FilteredPings, WereSent) {
  ReportText report = ReportText::bare();
  report.setAll("ping-", "", unknownHost);
  EXPECT_THAT(found(report), IsEmpty());
  report.setAll("ping-", pingOutput("192.0.2.120", {}, 0));
  EXPECT_THAT(found(report), IsEmpty());
  report.set("ping-sydney", pingOutput("192.0.2.120", {}, 1));
  EXPECT_THAT(found(report), ElementsAre("warning pings-filtered"));
}

}  // namespace
}  // namespace reader
