// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Resolvers, names and the Skivra.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "report_text.h"

namespace reader {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

ReportText resolverASilent(ReportText report, const std::string& why) {
  for (const char* key : {"debug-53", "myip-a"}) {
    report.set(key, digFailure("192.0.2.53#53", why));
  }
  report.set("debug-443", digFailure("192.0.2.53#443", why));
  report.set("debug-5353", digFailure("192.0.2.53#5353", why));
  return report;
}

ReportText port53Silent(ReportText report) {
  for (const char* key : {"debug-53", "myip-a"}) {
    report.set(key, digFailure("192.0.2.53#53", "timed out"));
  }
  report.setAll("server-name-",
                ";; communications error to 8.8.8.8#53: timed out\n"
                ";; no servers could be reached\n");
  for (const char* key : {"akamai-direct", "ultradns-direct"}) {
    report.set(key, digFailure("198.18.31.53#53", "timed out"));
  }
  return report;
}

ReportText namesUnknown(ReportText report) {
  for (const char* key : {"myip", "debug", "akamai-whoami", "ultradns-whoami"}) {
    report.set(key, digAnswer("", "192.168.1.1#53", "SERVFAIL"));
  }
  return report;
}

const char* const othersDebug =
    "debug.halvik.example.\t60\tIN\tTXT\t\"no resolver of Halvik was asked\"\n";

TEST(ResolverDown, RefusesOrIsSilentWhileOthersAnswer) {
  EXPECT_THAT(found(resolverASilent(ReportText::bare(), "connection refused")),
              ElementsAre("resolver-down"));
  EXPECT_THAT(found(resolverASilent(ReportText::bare(), "timed out")),
              ElementsAre("resolver-down"));
}

TEST(ResolverDown, ExplainsThatNamesAreUnknown) {
  const ReportText report = namesUnknown(resolverASilent(ReportText::bare(), "connection refused"));
  EXPECT_THAT(found(report), ElementsAre("resolver-down"));
  EXPECT_THAT(firstText(report), HasSubstr("192.0.2.53"));
}

TEST(ResolverDown, MayBeTheOtherOne) {
  ReportText report = ReportText::clear();
  report.set("domain-b", digFailure("198.51.100.53#53", "connection refused"));
  EXPECT_THAT(found(report), ElementsAre("resolver-down"));
  EXPECT_THAT(firstText(report), HasSubstr("198.51.100.53"));
}

TEST(ResolverDown, IsNotOneUnansweredQuestion) {
  ReportText report = ReportText::bare();
  report.set("myip-a", digFailure("192.0.2.53#53", "timed out"));
  EXPECT_THAT(found(report), IsEmpty());
}

TEST(Port53, MayBeBlocked) {
  EXPECT_THAT(found(port53Silent(ReportText::bare())), ElementsAre("port-53-blocked"));
  EXPECT_THAT(found(namesUnknown(port53Silent(ReportText::bare()))),
              ElementsAre("port-53-blocked"));
}

TEST(Port53, MayBeBlockedWithTheOtherPorts) {
  const ReportText report = resolverASilent(port53Silent(ReportText::bare()), "timed out");
  EXPECT_THAT(found(report), ElementsAre("resolver-ports-blocked"));
}

TEST(OtherPorts, MayBeBlockedAlone) {
  ReportText report = ReportText::bare();
  report.set("debug-443", digFailure("192.0.2.53#443", "timed out"));
  EXPECT_THAT(found(report), ElementsAre("warning other-ports-blocked"));
}

TEST(Port53, MayBeHijacked) {
  ReportText report = ReportText::bare();
  report.set("debug-53", digAnswer(othersDebug, "192.0.2.53#53"));
  report.set("debug", digAnswer(othersDebug));
  EXPECT_THAT(found(report), ElementsAre("port-53-hijacked"));
  report.setAll("server-name-", "hostname.bind\ttext = \"resolver.isp.example\"\n");
  EXPECT_THAT(firstText(report), HasSubstr("by the name resolver.isp.example"));
}

TEST(ServiceNotUsed, IsWhenTheMachineAsksOthers) {
  ReportText report = ReportText::bare();
  report.set("debug", digAnswer(othersDebug));
  report.set("akamai-whoami", digAnswer("whoami.akamai.net.\t60\tIN\tA\t198.18.7.53\n"));
  EXPECT_THAT(found(report), ElementsAre("service-not-used"));
  EXPECT_THAT(firstText(report),
              HasSubstr("it asks 192.168.1.1, which asks others from 198.18.7.53"));
}

TEST(ServiceNotUsed, IsNotAnUnansweredQuestion) {
  ReportText report = ReportText::bare();
  report.set("debug", digAnswer("", "192.168.1.1#53", "SERVFAIL"));
  EXPECT_THAT(found(report), IsEmpty());
}

TEST(NameResolution, FailsAsAWhole) {
  ReportText report = namesUnknown(ReportText::bare());
  report.setAll("ping-", "", "ping: www.halvik.example: Temporary failure in name resolution\n");
  report.setAll("web-block", "");
  EXPECT_THAT(found(report), ElementsAre("name-resolution-fails"));
  report.set("myip", digAnswer("myip.halvik.example.\t60\tIN\tA\t198.18.7.20\n"));
  report.set("debug", digAnswer("debug.halvik.example.\t60\tIN\tTXT\t\"server a\"\n"));
  report.set("akamai-whoami", digAnswer("whoami.akamai.net.\t60\tIN\tA\t192.0.2.53\n"));
  report.set("web-block-id", "block id: 1\n").set("web-block-page", "block page: ok\n");
  report.set("web-block-id-head", "HTTP/1.1 200 OK\n");
  EXPECT_THAT(found(report), IsEmpty());
}

TEST(Skivra, MayBeSilent) {
  ReportText report = ReportText::clear();
  report.set("skivra-debug", digFailure("127.0.0.1#53", "connection refused"));
  report.set("skivra-domain", digFailure("127.0.0.1#53", "connection refused"));
  EXPECT_THAT(found(report), ElementsAre("skivra-silent"));
  EXPECT_THAT(found(namesUnknown(report)), ElementsAre("skivra-silent"));
}

TEST(Skivra, IsSilentWhereItIsNotInstalled) {
  ReportText report = ReportText::clear();
  const std::string missing = "/bin/ls: cannot access 'x': No such file or directory\n";
  report.setAll("skivra-folder", "", missing).set("skivra-state", "", missing);
  report.set("skivra-debug", digFailure("127.0.0.1#53", "connection refused"));
  EXPECT_THAT(found(report), ElementsAre("note skivra-not-installed"));
}

TEST(Skivra, MayHaveNoState) {
  const std::string missing = "/bin/cat: x: No such file or directory\n";
  EXPECT_THAT(found(ReportText::clear().set("skivra-state", "", missing)),
              ElementsAre("skivra-no-state"));
  EXPECT_THAT(found(ReportText::bare().set("skivra-state", "", missing)), IsEmpty());
}

TEST(Skivra, MayNotBeAsked) {
  ReportText report = ReportText::clear();
  report.replace("name-servers", "127.0.0.1", "192.168.1.1");
  EXPECT_THAT(found(report), ElementsAre("skivra-not-used"));
  report.set("debug", digAnswer(othersDebug));
  EXPECT_THAT(found(report), ElementsAre("service-not-used"));
}

TEST(ResolverDown, ShowsTheQueriesAndTheHostThatIsThere) {
  ReportText report = resolverASilent(ReportText::bare(), "connection refused");
  EXPECT_EQ(firstText(report),
            "The service's resolver 192.0.2.53 does not answer, though the host 192.0.2.53 can be "
            "reached.");
  const std::string refused = ";; communications error to 192.0.2.53#";
  EXPECT_THAT(firstEvidence(report),
              ElementsAre("debug-53: " + refused + "53: connection refused",
                          "debug-443: " + refused + "443: connection refused",
                          "debug-5353: " + refused + "5353: connection refused",
                          "path-resolver-a: traceroute to 192.0.2.53 (192.0.2.53), 30 hops max, 60 "
                          "byte packets"));
  report.set("path-resolver-a", "", "connect: Network is unreachable\n");
  EXPECT_EQ(firstText(report), "The service's resolver 192.0.2.53 does not answer.");
  report.set("path-resolver-a",
             "traceroute to 192.0.2.53 (192.0.2.53), 30 hops max, 60 byte packets\n 1  * * *\n");
  EXPECT_EQ(firstText(report), "The service's resolver 192.0.2.53 does not answer.");
  report.set("path-resolver-a", "");
  EXPECT_EQ(firstText(report), "The service's resolver 192.0.2.53 does not answer.");
}

TEST(ResolverDown, MayBeBoth) {
  ReportText report = resolverASilent(ReportText::clear(), "connection refused");
  for (const char* key : {"domain-a", "domain-b"}) {
    report.set(key, digFailure("x#53", "connection refused"));
  }
  report.set("path-resolver-a", "", "connect: Network is unreachable\n");
  EXPECT_EQ(firstText(report),
            "The service's resolvers 192.0.2.53 and 198.51.100.53 do not answer, though the host "
            "198.51.100.53 can be reached.");
  const std::string refused = ";; communications error to ";
  EXPECT_THAT(firstEvidence(report),
              ElementsAre("domain-a: " + refused + "x#53: connection refused",
                          "debug-53: " + refused + "192.0.2.53#53: connection refused",
                          "debug-443: " + refused + "192.0.2.53#443: connection refused",
                          "domain-b: " + refused + "x#53: connection refused",
                          "path-resolver-b: traceroute to 198.51.100.53 (198.51.100.53), 30 hops "
                          "max, 60 byte packets"));
}

/// Pings of which so many get lost, of 200.
ReportText withLoss(ReportText report, std::size_t lost) {
  return report.setAll("ping-", "")
      .set("ping-website", pingOutput("203.0.113.10", std::vector<double>(200 - lost, 20), 200));
}

TEST(ResolverDown, IsSilentWithoutALossThatExplainsIt) {
  const auto silentB = [](std::size_t lost, const std::string& why) {
    ReportText report = withLoss(ReportText::clear(), lost);
    return report.set("domain-b", digFailure("198.51.100.53#53", why));
  };
  EXPECT_THAT(found(silentB(0, "timed out")), ElementsAre("resolver-down"));
  EXPECT_THAT(found(silentB(5, "timed out")), ElementsAre("resolver-down"));
  EXPECT_THAT(found(silentB(6, "timed out")), ElementsAre("packet-loss"));
  EXPECT_THAT(found(silentB(6, "connection refused")), ElementsAre("packet-loss", "resolver-down"));
}

TEST(ResolverDown, IsNotConcludedWhereNobodyAnswersOnPort53) {
  ReportText report = port53Silent(ReportText::clear());
  for (const char* key : {"domain-a", "domain-b", "domain-third-party"}) {
    report.set(key, digFailure("x#53", "timed out"));
  }
  EXPECT_THAT(found(report), ElementsAre("port-53-blocked"));
}

TEST(ResolverDown, IsWhatItselfRefuses) {
  ReportText report = resolverASilent(port53Silent(ReportText::bare()), "timed out");
  report.set("akamai-direct", digFailure("198.18.31.53#53", "connection refused"));
  EXPECT_THAT(found(report), ElementsAre("resolver-ports-blocked"));
  report.set("debug-443", digFailure("192.0.2.53#443", "connection refused"));
  EXPECT_THAT(found(report), ElementsAre("resolver-down"));
}

TEST(ResolverDown, ExplainsASilentSkivra) {
  ReportText report = resolverASilent(ReportText::clear(), "timed out");
  report.set("domain-a", digFailure("192.0.2.53#53", "timed out"));
  for (const char* key : {"skivra-debug", "skivra-domain"}) {
    report.set(key, digFailure("127.0.0.1#53", "timed out"));
  }
  EXPECT_THAT(found(report), ElementsAre("resolver-down"));
}

TEST(OtherPorts, MayBeBlockedWithPort53) {
  ReportText report = resolverASilent(port53Silent(ReportText::bare()), "timed out");
  EXPECT_EQ(firstText(report),
            "The network lets no queries through to the service's resolvers, neither on port 53 "
            "nor on 443 and 5353.");
  const std::string error = ";; communications error to 192.0.2.53#";
  const std::string others = ";; communications error to 8.8.8.8#53: timed out";
  EXPECT_THAT(
      firstEvidence(report),
      ElementsAre("debug-53: " + error + "53: timed out", "debug-443: " + error + "443: timed out",
                  "debug-5353: " + error + "5353: timed out", "myip-a: " + error + "53: timed out",
                  "server-name-third-party: " + others, "server-name-root: " + others,
                  "server-name-anycast: " + others));
  report.set("debug", digAnswer(othersDebug));
  EXPECT_THAT(found(report), ElementsAre("resolver-ports-blocked"));
  EXPECT_THAT(found(namesUnknown(report)), ElementsAre("resolver-ports-blocked"));
}

TEST(OtherPorts, MayBeBlockedWithPort53ForTheSkivra) {
  ReportText report = resolverASilent(port53Silent(ReportText::clear()), "timed out");
  for (const char* key : {"domain-a", "domain-b", "domain-third-party"}) {
    report.set(key, digFailure("x#53", "timed out"));
  }
  for (const char* key : {"skivra-debug", "skivra-domain"}) {
    report.set(key, digFailure("127.0.0.1#53", "timed out"));
  }
  EXPECT_THAT(found(report), ElementsAre("resolver-ports-blocked"));
  EXPECT_THAT(firstEvidence(report), testing::SizeIs(7));
}

TEST(Port53, IsOpenElsewhere) {
  ReportText report = port53Silent(ReportText::bare());
  EXPECT_EQ(firstText(report),
            "Queries to the service's resolver get no answer on port 53, but do on other ports.");
  const std::string error = ";; communications error to 192.0.2.53#53: timed out";
  const std::string answer = "->>HEADER<<- opcode: QUERY, status: NOERROR, id: ";
  EXPECT_THAT(firstEvidence(report), ElementsAre("debug-53: " + error, "myip-a: " + error,
                                                 "debug-443: ;; " + answer + "36564",
                                                 "debug-5353: ;; " + answer + "40416"));
  report.set("debug", digAnswer(othersDebug));
  EXPECT_THAT(found(report), ElementsAre("port-53-blocked"));
  report.set("debug-443", digFailure("192.0.2.53#443", "timed out"));
  EXPECT_THAT(found(report), ElementsAre("port-53-blocked"));
  EXPECT_THAT(firstEvidence(report), ElementsAre("debug-53: " + error,
                                                 "debug-443: ;; communications "
                                                 "error to 192.0.2.53#443: timed out",
                                                 "debug-5353: ;; " + answer + "40416"));
}

TEST(Port53, IsOpenOnOneOtherPort) {
  ReportText report = port53Silent(ReportText::bare());
  report.set("debug-5353", digFailure("192.0.2.53#5353", "timed out"));
  EXPECT_THAT(found(report), ElementsAre("port-53-blocked"));
  EXPECT_THAT(firstEvidence(report), testing::SizeIs(3));
}

TEST(OtherPorts, AreNamed) {
  const std::string error = ";; communications error to 192.0.2.53#";
  ReportText report = ReportText::bare();
  report.set("debug-5353", digFailure("192.0.2.53#5353", "timed out"));
  EXPECT_THAT(found(report), ElementsAre("warning other-ports-blocked"));
  EXPECT_EQ(firstText(report), "The service's resolver answers on port 53, but not on 5353.");
  EXPECT_THAT(firstEvidence(report), ElementsAre("debug-5353: " + error + "5353: timed out"));
  report.set("debug-443", digFailure("192.0.2.53#443", "timed out"));
  EXPECT_EQ(firstText(report),
            "The service's resolver answers on port 53, but not on 443 and 5353.");
  EXPECT_THAT(firstEvidence(report), ElementsAre("debug-443: " + error + "443: timed out",
                                                 "debug-5353: " + error + "5353: timed out"));
  EXPECT_THAT(found(withLoss(report, 6)),
              ElementsAre("packet-loss", "warning other-ports-blocked"));
  EXPECT_THAT(found(withLoss(report, 7)), ElementsAre("packet-loss"));
}

TEST(Port53, IsHijackedWithTheseLines) {
  ReportText report = ReportText::bare();
  report.set("debug-53", digAnswer(othersDebug, "192.0.2.53#53"));
  EXPECT_EQ(firstText(report),
            "Queries to the service's resolver on port 53 are answered by somebody else.");
  const std::string debug =
      "debug.halvik.example.\t60\tIN\tTXT\t\"no resolver of Halvik was asked\"";
  const std::string right = "debug.halvik.example.\t0\tIN\tTXT\t\"organization 4711\"";
  EXPECT_THAT(firstEvidence(report),
              ElementsAre("debug-53: " + debug, "debug-443: " + right, "debug-5353: " + right));
  const std::string name = "hostname.bind\ttext = \"resolver.isp.example\"";
  report.setAll("server-name-", name + "\n");
  EXPECT_EQ(firstText(report),
            "Queries to the service's resolver on port 53 are answered by somebody else, who goes "
            "by the name resolver.isp.example.");
  EXPECT_THAT(firstEvidence(report),
              ElementsAre("debug-53: " + debug, "server-name-third-party: " + name,
                          "server-name-root: " + name, "server-name-anycast: " + name,
                          "debug-443: " + right, "debug-5353: " + right));
  // One of two names, or one that did not answer.
  for (const char* key : {"server-name-third-party", "server-name-root", "server-name-anycast"}) {
    report.setAll("server-name-", name + "\n");
    report.set(key, "hostname.bind\ttext = \"another.example\"\n");
    EXPECT_THAT(firstEvidence(report), testing::SizeIs(3)) << key;
    report.set(key, "** server can't find hostname.bind: NXDOMAIN\n");
    EXPECT_THAT(firstEvidence(report), testing::SizeIs(3)) << key;
  }
  report.setAll("server-name-", "").set("server-name-root", name + "\n");
  EXPECT_THAT(firstEvidence(report), testing::SizeIs(3));
  report.set("server-name-third-party", name + "\n");
  EXPECT_THAT(firstEvidence(report), testing::SizeIs(5));
  report.set("debug-443", digAnswer(othersDebug, "192.0.2.53#443"));
  EXPECT_THAT(firstEvidence(report), testing::SizeIs(4));
  report.set("debug-5353", "");
  EXPECT_THAT(firstEvidence(report), testing::SizeIs(3));
}

TEST(Port53, IsHijackedAlsoForWhatThatExplains) {
  ReportText report = ReportText::clear();
  report.replace("name-servers", "127.0.0.1", "192.168.1.1");
  report.set("debug-53", digAnswer(othersDebug, "192.0.2.53#53"))
      .set("debug", digAnswer(othersDebug));
  EXPECT_THAT(found(report), ElementsAre("port-53-hijacked"));
}

TEST(Port53, IsHijackedWithWhatComesOfIt) {
  ReportText report = ReportText::clear();
  report.set("debug-53", digAnswer(othersDebug, "192.0.2.53#53"));
  report.set("domain-a", digAnswer("shop.example.\t60\tIN\tA\t198.18.40.79\n"));
  report.replace("ping-website", "203.0.113.10", "203.0.113.20");
  EXPECT_THAT(found(report), ElementsAre("port-53-hijacked"));
}

TEST(ServiceNotUsed, NamesWhoIsAsked) {
  ReportText report = ReportText::bare();
  report.set("debug", digAnswer(othersDebug));
  const std::string debug =
      "debug: debug.halvik.example.\t60\tIN\tTXT\t\"no resolver of Halvik was "
      "asked\"";
  EXPECT_EQ(firstText(report),
            "The machine does not use the service: it asks 192.168.1.1, which asks others from "
            "192.0.2.53.");
  EXPECT_THAT(firstEvidence(report),
              ElementsAre(debug, "name-servers: nameserver[0] : 192.168.1.1",
                          "akamai-whoami: whoami.akamai.net.\t60\tIN\tA\t192.0.2.53"));
  for (const char* key : {"akamai-whoami", "ultradns-whoami"}) {
    report.set(key, digAnswer(""));
  }
  report.set("name-servers",
             "DNS configuration\n\nresolver #1\n  nameserver[0] : 10.0.0.1\n"
             "  nameserver[1] : 10.0.0.2\n\nresolver #2\n  domain   : lan.example\n"
             "  nameserver[0] : 10.0.0.3\n");
  EXPECT_EQ(firstText(report),
            "The machine does not use the service: it asks 10.0.0.1 and 10.0.0.2.");
  EXPECT_THAT(firstEvidence(report), ElementsAre(debug, "name-servers: nameserver[0] : 10.0.0.1",
                                                 "name-servers: nameserver[1] : 10.0.0.2"));
  report.set("name-servers", "");
  EXPECT_EQ(firstText(report), "The machine does not use the service: it asks another resolver.");
}

TEST(NameResolution, FailsWithTheseLines) {
  ReportText report = namesUnknown(ReportText::bare());
  report.setAll("web-block", "");
  EXPECT_EQ(firstText(report),
            "The machine cannot look up any names: its resolver 192.168.1.1 gives no answers.");
  const std::string answer = ";; ->>HEADER<<- opcode: QUERY, status: SERVFAIL, id: 3280";
  EXPECT_THAT(firstEvidence(report),
              ElementsAre("myip: " + answer, "debug: " + answer, "akamai-whoami: " + answer,
                          "name-servers: nameserver[0] : 192.168.1.1"));
  report.set("name-servers", "");
  EXPECT_EQ(firstText(report), "The machine cannot look up any names.");
}

TEST(Skivra, IsSilentInThisLine) {
  ReportText report = ReportText::clear();
  report.set("skivra-debug", digFailure("127.0.0.1#53", "connection refused"));
  report.set("debug", digAnswer(othersDebug));
  EXPECT_THAT(found(report), ElementsAre("skivra-silent"));
  EXPECT_EQ(firstText(report), "The Skivra is installed, but its resolver does not answer.");
  EXPECT_THAT(firstEvidence(report), ElementsAre("skivra-debug: ;; communications error to "
                                                 "127.0.0.1#53: connection refused"));
}

TEST(Skivra, HasNoStateInTheseLines) {
  const std::string missing = "/bin/cat: x: No such file or directory";
  ReportText report = ReportText::clear();
  report.set("skivra-state", "", missing + "\n");
  EXPECT_EQ(firstText(report), "The Skivra is installed, but its state file is missing.");
  EXPECT_THAT(firstEvidence(report),
              ElementsAre("skivra-state: " + missing, "skivra-folder-again: beacon-logs"));
  report.setAll("skivra-folder", "", missing + "\n");
  EXPECT_THAT(found(report), ElementsAre("note skivra-not-installed"));
  EXPECT_EQ(firstText(report), "The Skivra's tests were asked for, but it is not installed.");
  EXPECT_THAT(firstEvidence(report), ElementsAre("skivra-folder-again: " + missing));
}

TEST(Skivra, IsAskedIfAnyOfTheServersIsHere) {
  const std::string first = "DNS configuration\n\nresolver #1\n";
  const std::string second =
      "\nresolver #2\n  domain   : lan.example\n  nameserver[0] : 10.0.0.3\n";
  ReportText report = ReportText::clear();
  report.set("name-servers",
             first + "  nameserver[0] : 10.0.0.1\n  nameserver[1] : 10.0.0.2\n" + second);
  EXPECT_THAT(found(report), ElementsAre("skivra-not-used"));
  EXPECT_EQ(firstText(report),
            "The Skivra is installed, but the machine asks 10.0.0.1 and 10.0.0.2 in place of it.");
  EXPECT_THAT(firstEvidence(report), ElementsAre("name-servers: nameserver[0] : 10.0.0.1",
                                                 "name-servers: nameserver[1] : 10.0.0.2"));
  report.set("name-servers",
             first + "  nameserver[0] : 10.0.0.1\n  nameserver[1] : 127.0.0.1\n" + second);
  EXPECT_THAT(found(report), IsEmpty());
  report.set("name-servers", first + second);
  EXPECT_THAT(found(report), IsEmpty());
  // One that is here, but for a single domain.
  report.set("name-servers", first +
                                 "  nameserver[0] : 10.0.0.1\n\nresolver #2\n"
                                 "  domain   : lan.example\n  nameserver[0] : 127.0.0.1\n");
  EXPECT_THAT(found(report), ElementsAre("skivra-not-used"));
}

TEST(Skivra, IsNotAskedWhereItIsNotInstalled) {
  const std::string missing = "/bin/ls: cannot access 'x': No such file or directory\n";
  ReportText report = ReportText::clear();
  report.replace("name-servers", "127.0.0.1", "192.168.1.1");
  report.setAll("skivra-folder", "", missing).set("skivra-state", "", missing);
  EXPECT_THAT(found(report), ElementsAre("note skivra-not-installed"));
}

}  // namespace
}  // namespace reader
