// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Packets that get lost.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "report_text.h"

namespace reader {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

std::string received(std::size_t count, std::size_t sent = 5) {
  return pingOutput("192.0.2.102", std::vector<double>(count, 80), sent);
}

std::string path(const std::string& address, const std::string& hops) {
  return "traceroute to host (" + address + "), 30 hops max, 60 byte packets\n" + hops;
}

const std::vector<std::pair<std::string, std::string>> paths{
    {"path-resolver-a", "192.0.2.53"},   {"path-resolver-b", "198.51.100.53"},
    {"path-api", "203.0.113.11"},        {"path-monitor", "203.0.113.12"},
    {"path-block-page", "203.0.113.20"}, {"path-category-hit", "203.0.113.21"}};

ReportText withoutPaths(ReportText report) {
  return report.setAll("path-", "", "connect: Network is unreachable\n");
}

/// A hop that loses one of its three probes, or none.
std::string hop(int number, const std::string& address, bool isLossy) {
  return " " + std::to_string(number) + "  host (" + address + ")  9.1 ms " +
         (isLossy ? "*" : " 9.2 ms") + "  9.3 ms\n";
}

/// Six paths of three hops, in so many of which the first, second and third hop lose a probe, and a
/// host that answers two of six pings: a hop has to lose a sixth of its probes.
ReportText withLossAt(const std::vector<std::size_t>& counts) {
  ReportText report = ReportText::bare();
  report.setAll("ping-", "").set("ping-website", received(2, 6));
  for (std::size_t i = 0; i < paths.size(); ++i) {
    const auto& [key, address] = paths[i];
    report.set(key, path(address, hop(1, "192.168.1.1", i < counts[0]) +
                                      hop(2, "198.18.7.1", i < counts[1]) +
                                      hop(3, address, i < counts[2])));
  }
  return report;
}

TEST(PacketLoss, IsNamedWithTheHopWhereItBegins) {
  ReportText report = withoutPaths(ReportText::bare());
  report.set("ping-seattle", received(3))
      .set("ping-london", received(3))
      .set("ping-sydney", received(0))
      .set("path-api", path("203.0.113.11", hop(1, "192.168.1.1", false) +
                                                " 2  host (198.18.7.1)  9.1 ms * *\n" +
                                                " 3  host (203.0.113.11)  * 9.2 ms *\n"))
      .set("path-monitor",
           path("203.0.113.12", hop(1, "192.168.1.1", true) + hop(2, "198.18.7.1", true) +
                                    hop(3, "203.0.113.12", true)));
  EXPECT_THAT(found(report), ElementsAre("packet-loss", "silent-city"));
  EXPECT_EQ(firstText(report),
            "3.8 % of the packets get lost, towards 2 of 21 hosts, from the hop 198.18.7.1 on.");
  const std::string counts = ": 5 packets transmitted, 3 received, 40% packet loss, time 4006ms";
  EXPECT_THAT(firstEvidence(report), ElementsAre("ping-seattle" + counts, "ping-london" + counts,
                                                 "path-api: 2  host (198.18.7.1)  9.1 ms * *"));
  // Two probes that one hop does not answer prove nothing.
  report.set("path-monitor",
             path("203.0.113.12", hop(1, "192.168.1.1", false) + hop(2, "198.18.7.1", false) +
                                      hop(3, "203.0.113.12", false)));
  EXPECT_EQ(firstText(report), "3.8 % of the packets get lost, towards 2 of 21 hosts.");
}

TEST(PacketLoss, IsNotAFewPackets) {
  ReportText report = ReportText::bare();
  report.set("ping-seattle", received(4)).set("ping-london", received(3));
  EXPECT_THAT(found(report), IsEmpty());
  report.set("ping-london", received(2));
  EXPECT_THAT(found(report), ElementsAre("packet-loss"));
  report.setAll("ping-", "").set("ping-seattle", received(2));
  EXPECT_THAT(found(report), IsEmpty());
  report.set("ping-seattle", received(3)).set("ping-london", received(4));
  report.set("ping-miami", received(5));
  EXPECT_THAT(found(report), IsEmpty());
  report.set("ping-london", "").set("ping-miami", "");
  report.set("ping-seattle", received(1));
  EXPECT_THAT(found(report), ElementsAre("packet-loss"));
}

TEST(PacketLoss, IsNotThatOfOneHostOfSeveral) {
  ReportText report = ReportText::bare();
  report.set("ping-sydney", received(1));
  EXPECT_THAT(found(report), IsEmpty());
  report.set("ping-london", received(4));
  EXPECT_THAT(found(report), ElementsAre("packet-loss"));
  report.setAll("ping-", "").set("ping-sydney", received(1)).set("ping-london", received(5));
  EXPECT_THAT(found(report), IsEmpty());
}

TEST(PacketLoss, CountsAsManyAsAReportCanClaim) {
  ReportText report = ReportText::bare();
  report.setAll("ping-", "");
  report.set("ping-sydney", received(5, 2147483647)).set("ping-london", received(5, 2147483647));
  EXPECT_THAT(found(report), ElementsAre("packet-loss"));
}

TEST(PacketLoss, IsNotASmallShare) {
  ReportText report = ReportText::bare();
  report.set("ping-website", received(90, 95)).set("ping-seattle", received(4));
  EXPECT_THAT(found(report), ElementsAre("packet-loss"));
  report.set("ping-website", received(91, 96));
  EXPECT_THAT(found(report), IsEmpty());
}

TEST(PacketLoss, CountsAHostThatLosesOnePacketOfMany) {
  ReportText report = withoutPaths(ReportText::bare());
  report.set("ping-website", received(199, 200)).set("ping-seattle", received(0));
  report.set("ping-london", received(1)).set("ping-miami", received(1));
  EXPECT_EQ(firstText(report), "3 % of the packets get lost, towards 3 of 21 hosts.");
}

TEST(PacketLoss, IsNotMadeUpForByAnswersThatCameTwice) {
  ReportText report = ReportText::bare();
  report.set("ping-website", received(9));
  report.set("ping-seattle", received(3)).set("ping-london", received(3));
  EXPECT_THAT(found(report), ElementsAre("packet-loss"));
}

TEST(PacketLoss, ShowsTheLinesOfTheFirstFourHosts) {
  ReportText report = withoutPaths(ReportText::bare());
  report.setAll("ping-", received(4));
  EXPECT_EQ(firstText(report), "20 % of the packets get lost, towards 22 of 22 hosts.");
  EXPECT_THAT(firstEvidence(report), SizeIs(4));
}

TEST(PacketLoss, BeginsWhereTheHopsBehindLosePacketsAsWell) {
  const std::string inside = ", from the first hop on: in the local network";
  const std::vector<std::pair<std::vector<std::size_t>, std::string>> rows{
      {{0, 0, 0}, ""},
      {{3, 3, 3}, inside},
      {{2, 3, 3}, ", from the hop 198.18.7.1 on"},
      {{6, 0, 0}, ""},
      {{3, 6, 0}, inside},
      {{3, 5, 0}, ""},
      {{0, 6, 0}, ", from the hop 198.18.7.1 on"},
      {{0, 0, 3}, ", from the hop 192.0.2.53 on"},
  };
  for (const auto& [counts, text] : rows) {
    const ReportText report = withLossAt(counts);
    EXPECT_EQ(firstText(report),
              "66.7 % of the packets get lost, towards 1 of 1 hosts" + text + ".");
    EXPECT_THAT(firstEvidence(report), SizeIs(text.empty() ? 1 : 2));
  }
}

TEST(PacketLoss, BeginsAtTheFirstHostOfAHopThatLosesAny) {
  ReportText report = withLossAt({0, 0, 3});
  const auto pathBy = [&](std::size_t i, const std::string& address, bool isLossy) {
    report.set(paths[i].first,
               path(paths[i].second, hop(1, "192.168.1.1", false) + hop(2, address, isLossy) +
                                         hop(3, paths[i].second, true)));
  };
  pathBy(0, "198.18.7.1", false);
  pathBy(1, "198.18.7.2", true);
  pathBy(2, "198.18.7.3", true);
  pathBy(3, "198.18.7.4", true);
  EXPECT_EQ(firstEvidence(report).back(),
            paths[1].first + ": 2  host (198.18.7.2)  9.1 ms *  9.3 ms");
  EXPECT_THAT(firstText(report), testing::HasSubstr("from the hop 198.18.7.2 on"));
}

TEST(PacketLoss, BeginsNowhereOnPathsThatDoNotArrive) {
  ReportText report = withoutPaths(withLossAt({0, 0, 0}));
  report.set("path-api", path("203.0.113.11", hop(1, "192.168.1.1", true) +
                                                  hop(2, "198.18.7.1", true) + " 3  * * *\n"));
  EXPECT_EQ(firstText(report), "66.7 % of the packets get lost, towards 1 of 1 hosts.");
}

TEST(PacketLoss, BeginsNotAtAHopThatNeverAnswers) {
  ReportText report = withoutPaths(withLossAt({0, 0, 0}));
  report.set("path-api",
             path("203.0.113.11",
                  " 1  * * *\n 2  host (198.18.7.1)\n 3  host (203.0.113.11)  9.1 ms * * *\n"));
  EXPECT_EQ(firstText(report),
            "66.7 % of the packets get lost, towards 1 of 1 hosts, from the hop 203.0.113.11 on.");
}

TEST(PacketLoss, ExplainsWhatComesOfIt) {
  ReportText report = ReportText::bare();
  report.setAll("ping-", pingOutput("192.0.2.102", {20, 200, 400}));
  report.set("web-monitor", "");
  report.set("path-category-hit", path("203.0.113.21", hop(1, "192.168.1.1", true)));
  EXPECT_THAT(found(report), ElementsAre("packet-loss"));
  report.setAll("ping-", pingOutput("192.0.2.102", {20, 200, 400}, 3));
  EXPECT_THAT(found(report), ElementsAre("uneven-delay", "path-ends-early", "web-check-fails"));
}

}  // namespace
}  // namespace reader
