// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Paths that do not lead to their host.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "report_text.h"

namespace reader {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A path by these hosts; none is a hop that does not answer.
std::string path(const std::string& address, const std::vector<std::string>& hosts) {
  std::string text = "traceroute to host (" + address + "), 30 hops max, 60 byte packets\n";
  for (std::size_t i = 0; i < hosts.size(); ++i) {
    text += " " + std::to_string(i + 1) + "  ";
    text +=
        hosts[i].empty() ? "* * *\n" : hosts[i] + " (" + hosts[i] + ")  9.1 ms  9.2 ms  9.3 ms\n";
  }
  return text;
}

const std::string a = "198.18.7.1";
const std::string b = "198.18.0.1";
const std::string times = ")  9.1 ms  9.2 ms  9.3 ms";

TEST(RoutingLoop, ComesByTheSameHosts) {
  ReportText report = ReportText::bare();
  report.set("path-api", path("203.0.113.11", {"192.168.1.1", a, b, a, b}));
  report.set("path-monitor", path("203.0.113.12", {a, b, a, b}));
  EXPECT_THAT(found(report), ElementsAre("routing-loop"));
  EXPECT_EQ(firstText(report),
            "The route to api.halvik.example and monitor.halvik.example goes in a circle.");
  EXPECT_THAT(
      firstEvidence(report),
      ElementsAre("path-api: traceroute to host (203.0.113.11), 30 hops max, 60 byte packets",
                  "path-api: 2  198.18.7.1 (198.18.7.1" + times,
                  "path-api: 3  198.18.0.1 (198.18.0.1" + times,
                  "path-api: 4  198.18.7.1 (198.18.7.1" + times,
                  "path-api: 5  198.18.0.1 (198.18.0.1" + times,
                  "path-monitor: traceroute to host (203.0.113.12), 30 hops max, 60 byte "
                  "packets",
                  "path-monitor: 1  198.18.7.1 (198.18.7.1" + times,
                  "path-monitor: 2  198.18.0.1 (198.18.0.1" + times,
                  "path-monitor: 3  198.18.7.1 (198.18.7.1" + times,
                  "path-monitor: 4  198.18.0.1 (198.18.0.1" + times));
}

TEST(RoutingLoop, IsNotAPathThatChangedOnceOrArrives) {
  ReportText report = ReportText::bare();
  report.set("path-api", path("203.0.113.11", {"192.168.1.1", a, b, a, "203.0.113.11"}));
  EXPECT_THAT(found(report), IsEmpty());
  report.set("path-api", path("203.0.113.11", {a, b, a, b, "203.0.113.11"}));
  EXPECT_THAT(found(report), IsEmpty());
}

TEST(EarlyEnd, IsAPathThatDoesNotArrive) {
  ReportText report = ReportText::bare();
  report.set("path-api", path("203.0.113.11", {"192.168.1.1", a, "", ""}));
  report.set("path-category-hit", path("203.0.113.21", {"", ""}));
  EXPECT_THAT(found(report), ElementsAre("path-ends-early"));
  EXPECT_EQ(firstText(report),
            "The route ends before it reaches api.halvik.example (after 198.18.7.1) and "
            "category-hit.halvik.example (no hop answers).");
  EXPECT_THAT(
      firstEvidence(report),
      ElementsAre("path-api: traceroute to host (203.0.113.11), 30 hops max, 60 byte packets",
                  "path-api: 2  198.18.7.1 (198.18.7.1" + times,
                  "path-category-hit: traceroute to host (203.0.113.21), 30 hops max, 60 "
                  "byte packets"));
}

TEST(EarlyEnd, IsNotAHostThatAnswersOtherwise) {
  struct Row {
    const char* key;
    const char* address;
  };
  // One that answers queries, one that has a page, a stranger's, one that is pinged, one of which
  // only the address has a page, and one at the address of another resolver.
  const std::vector<Row> rows{{"path-resolver-a", "192.0.2.53"}, {"path-monitor", "203.0.113.12"},
                              {"path-domain", "198.18.40.80"},   {"path-api", "203.0.113.10"},
                              {"path-api", "203.0.113.80"},      {"path-api", "8.8.8.8"}};
  for (const Row& row : rows) {
    ReportText report = ReportText::clear();
    report.set(row.key, path(row.address, {"192.168.1.1", ""}));
    EXPECT_THAT(found(report), IsEmpty()) << row.key;
  }
}

TEST(EarlyEnd, IsAHostThatDoesNotAnswerOtherwise) {
  ReportText report = ReportText::bare();
  report.set("path-monitor", path("203.0.113.12", {"192.168.1.1", ""})).set("web-monitor", "");
  EXPECT_THAT(found(report), ElementsAre("path-ends-early"));
  report = ReportText::bare();
  report.set("path-api", path("192.0.2.120", {"192.168.1.1", ""}));
  EXPECT_THAT(found(report), IsEmpty());
  report.set("ping-sydney", pingOutput("192.0.2.120", {20}, 1));
  EXPECT_THAT(found(report), IsEmpty());
  report.set("ping-sydney", pingOutput("192.0.2.120", {}));
  EXPECT_THAT(found(report), ElementsAre("silent-city", "path-ends-early"));
}

TEST(EarlyEnd, IsNotAHostThatAnswersAmongOthersOrRefusesProbes) {
  const std::string hop = " 5  a (192.0.2.204)  40.8 ms  host (203.0.113.11)  41.8 ms";
  ReportText report = ReportText::bare();
  report.set("path-api", path("203.0.113.11", {"192.168.1.1"}) + hop + "\n");
  EXPECT_THAT(found(report), IsEmpty());
  report.set("path-api", path("203.0.113.11", {"192.168.1.1"}) + hop + " !X\n");
  EXPECT_THAT(found(report), IsEmpty());
  report.set("path-api", path("203.0.113.11", {"192.168.1.1"}) + hop + " !H\n");
  EXPECT_THAT(found(report), ElementsAre("path-ends-early"));
}

TEST(EarlyEnd, NamesTheHostThatRefusesAPacket) {
  const std::string begin = path("203.0.113.11", {"192.168.1.1"});
  const auto text = [&](const std::string& hop) {
    return firstText(ReportText::bare().set("path-api", begin + hop));
  };
  const std::string sentence = "The route ends before it reaches api.halvik.example (";
  EXPECT_EQ(text(" 2  a (198.18.7.1)  9 ms !N *\n"), sentence + "refused by 198.18.7.1, !N).");
  EXPECT_EQ(text(" 2  a (198.18.7.1)  9 ms  b (198.18.7.2)  9 ms !X\n"),
            sentence + "refused by 198.18.7.2, !X).");
  EXPECT_EQ(text(" 2  a (198.18.7.1)  9 ms !N  b (198.18.7.2)  9 ms !X\n"),
            sentence + "refused by 198.18.7.1, !N).");
  EXPECT_EQ(text(" 2  a (198.18.7.1)  9 ms  b (198.18.7.2)  9 ms\n"),
            sentence + "after 198.18.7.1).");
}

TEST(EarlyEnd, IsNothingWhereNoPathWasLookedAt) {
  ReportText report = ReportText::bare();
  report.set("path-api", "", "api.halvik.example: Temporary failure in name resolution\n");
  EXPECT_THAT(found(report), IsEmpty());
  report.set("path-api", path("203.0.113.11", {""}), "connect: Network is unreachable\n");
  EXPECT_THAT(found(report), IsEmpty());
}

TEST(EarlyEnd, IsNotThatOfASilentResolver) {
  ReportText report = ReportText::clear();
  report.set("path-resolver-b", path("198.51.100.53", {"192.168.1.1", ""}));
  EXPECT_THAT(found(report), IsEmpty());
  report.set("domain-b", digFailure("198.51.100.53#53", "connection refused"));
  EXPECT_THAT(found(report), ElementsAre("resolver-down"));
  report.set("path-api", path("198.51.100.53", {"192.168.1.1", ""}));
  EXPECT_THAT(found(report), ElementsAre("path-ends-early", "resolver-down"));
  report = ReportText::bare();
  report.set("path-resolver-b", path("198.51.100.53", {"192.168.1.1", ""}));
  EXPECT_THAT(found(report), ElementsAre("path-ends-early"));
}

TEST(EarlyEnd, IsNotThatOfResolverAThatIsSilent) {
  ReportText report = ReportText::bare();
  report.set("path-resolver-a", path("192.0.2.53", {"192.168.1.1", ""}));
  for (const char* key : {"debug-53", "debug-443", "debug-5353", "myip-a"}) {
    report.set(key, digFailure("192.0.2.53", "timed out"));
  }
  EXPECT_THAT(found(report), ElementsAre("resolver-down"));
}

}  // namespace
}  // namespace reader
