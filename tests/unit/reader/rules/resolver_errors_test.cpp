// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Resolvers that answer, but with an error.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "report_text.h"

namespace reader {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const std::string header = ";; ->>HEADER<<- opcode: QUERY, status: ";

/// Whatever resolver A is asked, it gives this error.
ReportText resolverAFails(ReportText report, const std::string& status) {
  for (const char* key : {"debug-53", "debug-443", "debug-5353", "myip-a"}) {
    report.set(key, digAnswer("", "192.0.2.53#53", status));
  }
  return report;
}

TEST(ResolverError, IsAllThatAResolverAnswers) {
  ReportText report = resolverAFails(ReportText::bare(), "REFUSED");
  EXPECT_THAT(found(report), ElementsAre("resolver-error"));
  EXPECT_EQ(firstText(report),
            "The service's resolver answers with nothing but errors: 192.0.2.53 (REFUSED).");
  const std::string error = ": " + header + "REFUSED, id: 3280";
  EXPECT_THAT(firstEvidence(report),
              ElementsAre("debug-53" + error, "debug-443" + error, "debug-5353" + error));
  report.set("debug-443", digFailure("192.0.2.53#443", "timed out"));
  EXPECT_THAT(found(report), ElementsAre("resolver-error", "warning other-ports-blocked"));
  report.set("debug-443", digAnswer("", "192.0.2.53#443", "NXDOMAIN"));
  EXPECT_THAT(found(report), testing::Not(testing::Contains("resolver-error")));
}

TEST(ResolverError, ExplainsWhatOthersLearnFromIt) {
  ReportText report = resolverAFails(ReportText::clear(), "SERVFAIL");
  for (const char* key : {"domain", "domain-a", "domain-b", "myip", "debug", "akamai-whoami"}) {
    report.set(key, digAnswer("", "192.168.1.1#53", "SERVFAIL"));
  }
  EXPECT_THAT(found(report), ElementsAre("resolver-error"));
  report.set("ultradns-whoami", digAnswer("", "192.168.1.1#53", "SERVFAIL"));
  EXPECT_THAT(found(report), ElementsAre("resolver-error"));
}

TEST(ResolverError, MayBeThatOfTheOther) {
  ReportText report = ReportText::clear();
  report.set("domain-b", digAnswer("", "198.51.100.53#53", "REFUSED"));
  EXPECT_THAT(found(report), ElementsAre("resolver-error"));
  EXPECT_THAT(firstText(report), HasSubstr(": 198.51.100.53 (REFUSED)."));
  report.set("domain-b", digAnswer("", "198.51.100.53#53", "SERVFAIL"));
  EXPECT_THAT(found(report), IsEmpty());
  report = resolverAFails(ReportText::clear(), "SERVFAIL");
  for (const char* key : {"domain-a", "domain-b"}) {
    report.set(key, digAnswer("", "x#53", "REFUSED"));
  }
  EXPECT_EQ(firstText(report),
            "The service's resolvers answer with nothing but errors: 192.0.2.53 (REFUSED) and "
            "198.51.100.53 (REFUSED).");
}

TEST(ResolverError, MayBeOnPort53Alone) {
  ReportText report = ReportText::bare();
  report.set("debug-53", digAnswer("", "192.0.2.53#53", "REFUSED"));
  EXPECT_THAT(found(report), ElementsAre("warning port-53-error"));
  EXPECT_EQ(firstText(report),
            "The service's resolver answers a query with an error on port 53 (REFUSED), but not on "
            "port 443.");
  EXPECT_THAT(firstEvidence(report), ElementsAre("debug-53: " + header + "REFUSED, id: 3280",
                                                 "debug-443: " + header + "NOERROR, id: 36564"));
  report.set("myip-a", digAnswer("", "192.0.2.53#53", "REFUSED"));
  EXPECT_THAT(found(report), ElementsAre("port-53-error"));
  report.set("debug-443", digAnswer("", "192.0.2.53#443", "REFUSED"));
  EXPECT_THAT(firstText(report), HasSubstr("but not on port 5353."));
  report.set("debug-5353", digAnswer("", "192.0.2.53#5353", "REFUSED"));
  EXPECT_THAT(found(report), ElementsAre("resolver-error"));
}

TEST(DomainError, IsTheServicesAloneWhereOthersKnowTheDomain) {
  ReportText report = ReportText::clear();
  for (const char* key : {"domain", "domain-a", "domain-b", "skivra-domain"}) {
    report.set(key, digAnswer("", "192.0.2.53#53", "SERVFAIL"));
  }
  EXPECT_THAT(found(report), ElementsAre("domain-error"));
  EXPECT_EQ(firstText(report),
            "The service cannot look up shop.example (192.0.2.53: SERVFAIL and 198.51.100.53: "
            "SERVFAIL), though 8.8.8.8 knows it.");
  const std::string error = ": " + header + "SERVFAIL, id: 3280";
  EXPECT_THAT(firstEvidence(report),
              ElementsAre("domain-a" + error, "domain-b" + error,
                          "domain-third-party: shop.example.\t\t60\tIN\tA\t198.18.40.80"));
  report.set("domain-b", digFailure("198.51.100.53#53", "timed out"));
  EXPECT_THAT(found(report), ElementsAre("resolver-down", "domain-error"));
  report.set("domain-b", digAnswer("shop.example.\t60\tIN\tA\t198.18.40.80\n"));
  EXPECT_THAT(found(report), IsEmpty());
}

TEST(DomainError, IsNoneWhereNobodyKnowsTheDomain) {
  ReportText report = ReportText::clear();
  for (const char* key : {"domain", "domain-a", "domain-b", "skivra-domain"}) {
    report.set(key, digAnswer("", "192.0.2.53#53", "SERVFAIL"));
  }
  for (const char* status : {"SERVFAIL", "NXDOMAIN", "NOERROR"}) {
    report.set("domain-third-party", digAnswer("", "8.8.8.8#53", status));
    EXPECT_THAT(found(report), IsEmpty()) << status;
  }
}

/// Two of the four queries to the machine's own resolver fail.
ReportText unsteady(ReportText report) {
  return report.set("myip", digFailure("192.168.1.1#53", "timed out"))
      .set("akamai-whoami", digAnswer("", "192.168.1.1#53", "SERVFAIL"));
}

TEST(NameResolution, IsUnsteadyIfHalfOfTheQueriesFail) {
  ReportText report = unsteady(ReportText::bare());
  EXPECT_THAT(found(report), ElementsAre("warning name-resolution-unsteady"));
  EXPECT_EQ(firstText(report),
            "The machine's own resolver gives no good answer to 2 of 4 queries.");
  EXPECT_THAT(firstEvidence(report),
              ElementsAre("myip: ;; communications error to 192.168.1.1#53: timed out",
                          "akamai-whoami: " + header + "SERVFAIL, id: 3280"));
  // Two of five.
  EXPECT_THAT(found(unsteady(ReportText::clear())), IsEmpty());
  // One of two is too few to judge by.
  report = ReportText::bare();
  report.set("debug", "").set("ultradns-whoami", "").set("myip", digFailure("x#53", "timed out"));
  EXPECT_THAT(found(report), IsEmpty());
}

TEST(NameResolution, IsNotCalledUnsteadyWherePacketsGetLost) {
  const auto withLoss = [](std::size_t lost) {
    ReportText report = unsteady(ReportText::bare());
    return report.setAll("ping-", "")
        .set("ping-website", pingOutput("203.0.113.10", std::vector<double>(200 - lost, 20), 200));
  };
  EXPECT_THAT(found(withLoss(6)), ElementsAre("packet-loss", "warning name-resolution-unsteady"));
  EXPECT_THAT(found(withLoss(7)), ElementsAre("packet-loss"));
}

TEST(NameResolution, IsUnsteadyForTheseReasons) {
  ReportText report = unsteady(ReportText::bare());
  for (const char* key : {"debug-53", "debug-443", "debug-5353", "myip-a"}) {
    report.set(key, digFailure("192.0.2.53#53", "connection refused"));
  }
  EXPECT_THAT(found(report), ElementsAre("resolver-down"));
  report = unsteady(ReportText::bare());
  for (const char* key : {"debug-53", "myip-a"}) {
    report.set(key, digFailure("192.0.2.53#53", "timed out"));
  }
  EXPECT_THAT(found(report), ElementsAre("port-53-blocked"));
  for (const char* key : {"akamai-direct", "ultradns-direct", "debug-443", "debug-5353"}) {
    report.set(key, digFailure("192.0.2.53#443", "timed out"));
  }
  report.setAll("server-name-", ";; no servers could be reached\n");
  EXPECT_THAT(found(report), ElementsAre("resolver-ports-blocked"));
  report = unsteady(ReportText::clear());
  report.set("ultradns-whoami", digFailure("127.0.0.1#53", "timed out"));
  EXPECT_THAT(found(report), ElementsAre("warning name-resolution-unsteady"));
  report.set("skivra-debug", digFailure("127.0.0.1#53", "timed out"));
  EXPECT_THAT(found(report), ElementsAre("skivra-silent"));
}

}  // namespace
}  // namespace reader
