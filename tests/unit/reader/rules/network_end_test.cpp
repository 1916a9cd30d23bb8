// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Where the network ends: nothing answers beyond the router, or all answers though nothing should.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "report_text.h"

namespace reader {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

/// The router answers queries so; everything else is silent.
ReportText routerAlone(const std::string& answer) {
  ReportText report = ReportText::bare();
  report.setAll("ping-", "", "ping: www.halvik.example: Temporary failure in name resolution\n")
      .setAll("path-", "", "api.halvik.example: Temporary failure in name resolution\n")
      .setAll("web-", "")
      .setAll("server-name-", ";; no servers could be reached\n");
  for (const char* key : {"path-resolver-a", "path-resolver-b"}) {
    report.set(key, "traceroute to x (192.0.2.53), 30 hops max, 60 byte packets\n 1  * * *\n");
  }
  for (const char* key : {"debug-53", "debug-443", "debug-5353", "myip-a"}) {
    report.set(key, digFailure("192.0.2.53#53", "timed out"));
  }
  report.setAll("akamai-direct", digFailure("x#53", "timed out"));
  report.setAll("ultradns-direct", digFailure("x#53", "timed out"));
  for (const char* key : {"myip", "debug", "akamai-whoami", "ultradns-whoami"}) {
    report.set(key, answer);
  }
  return report;
}

std::string servfail(const std::string& server) {
  return digAnswer("", server, "SERVFAIL");
}

TEST(DeadLine, IsDeadBehindARouterThatAnswersQueriesAlone) {
  const ReportText report = routerAlone(servfail("192.168.1.1#53"));
  EXPECT_THAT(found(report), ElementsAre("line-down"));
  EXPECT_EQ(firstText(report),
            "Nothing answers beyond 192.168.1.1, the machine's own resolver, which gives errors "
            "alone.");
  const std::string path = "traceroute to x (192.0.2.53), 30 hops max, 60 byte packets";
  EXPECT_THAT(firstEvidence(report),
              ElementsAre("myip: ;; ->>HEADER<<- opcode: QUERY, status: SERVFAIL, id: 3280",
                          "path-resolver-a: " + path, "path-resolver-b: " + path));
}

TEST(DeadLine, IsNotConcludedFromAResolverElsewhere) {
  EXPECT_THAT(found(routerAlone(servfail("8.8.8.8#53"))), Not(Contains("line-down")));
  EXPECT_THAT(found(routerAlone(servfail("127.0.0.1#53"))), ElementsAre("gateway-silent"));
  // It gets its answers from somewhere.
  ReportText report = routerAlone(servfail("192.168.1.1#53"));
  report.set("debug", digAnswer("", "192.168.1.1#53"));
  EXPECT_THAT(found(report), Not(Contains("line-down")));
}

TEST(DeadLine, ShowsTheHopIfThereIsOne) {
  ReportText report = routerAlone(servfail("192.168.1.1#53"));
  report.set("path-resolver-a",
             "traceroute to x (192.0.2.53), 30 hops max, 60 byte packets\n"
             " 1  192.168.1.1 (192.168.1.1)  3.1 ms  3.2 ms  3.3 ms\n 2  * * *\n");
  EXPECT_EQ(firstText(report), "Nothing answers beyond 192.168.1.1, 1 hop away.");
}

TEST(NoAddress, IsNotOneWithWhichEverythingAnswers) {
  ReportText report = ReportText::bare();
  report.replace("interfaces", "inet 192.168.1.20 ", "inet 169.254.3.4 ");
  EXPECT_THAT(found(report), IsEmpty());
  EXPECT_THAT(found(routerAlone("").replace("interfaces", "inet 192.168.1.20 ", "x ")),
              ElementsAre("no-address"));
}

}  // namespace
}  // namespace reader
