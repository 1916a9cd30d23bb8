// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "reader/facts/extract.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "reader/output/reading.h"
#include "reader/parse/titles.h"
#include "report_text.h"

namespace reader {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/// The facts of a report, with the text that they point into.
struct Read {
  explicit Read(const ReportText& report)
      : text(report.text()), reading(readReport("test", text)), facts(reading.facts) {}
  std::string text;
  ReportReading reading;
  const Facts& facts;
};

void expectCommonFacts(const Facts& facts) {
  EXPECT_THAT(facts.toolErrors, IsEmpty());
  EXPECT_EQ(facts.domain, "shop.example");
  ASSERT_NE(facts.resolver("debug-443"), nullptr);
  EXPECT_EQ(facts.resolver("debug-443")->server, "resolver-a.halvik.example");
  EXPECT_EQ(facts.resolver("debug-443")->organization, "4711");
  EXPECT_EQ(facts.resolver("debug-443")->port, 443);
  EXPECT_EQ(facts.resolver("debug")->answeredBy, "127.0.0.1#53");
  EXPECT_THAT(facts.publicAddresses, SizeIs(4));
  EXPECT_EQ(facts.publicAddresses[0].address, "198.18.7.20");
  EXPECT_EQ(facts.resolverAddresses[0].address, "192.0.2.53");
  EXPECT_EQ(facts.query("domain-b")->answers.at(0).data, "198.18.40.80");
  EXPECT_EQ(facts.nameServers.at(0).address, "127.0.0.1");
  EXPECT_THAT(facts.nameServers, SizeIs(1));
  EXPECT_THAT(facts.pings, SizeIs(22));
  EXPECT_EQ(facts.ping("ping-seattle")->received, 5);
  EXPECT_THAT(facts.ping("ping-seattle")->timesMs, SizeIs(5));
  EXPECT_EQ(facts.path("path-api")->address, "203.0.113.11");
  EXPECT_TRUE(facts.path("path-api")->isReached());
  EXPECT_EQ(facts.path("path-api")->hops.at(1).address, "198.18.7.1");
  EXPECT_THAT(facts.path("path-api")->hops.at(1).timesMs, SizeIs(3));
  EXPECT_THAT(facts.serverNames, SizeIs(3));
  EXPECT_EQ(facts.serverNames[0].name, "anycast-1.third-party.example");
  EXPECT_EQ(facts.webCheck("web-monitor")->kind, WebCheck::Kind::expected);
  EXPECT_EQ(facts.webCheck("web-block-id-head")->status, 200);
  EXPECT_THAT(facts.webCheck("web-block-id-head")->redirects,
              ElementsAre("http://block.halvik.example/"));
  EXPECT_EQ(facts.webCheck("web-blocked-ip")->title, "Blocked");
  EXPECT_EQ(facts.skivra.isInstalled, true);
  EXPECT_EQ(facts.skivra.state, "protected");
  EXPECT_THAT(facts.skivra.originalNameServers, ElementsAre("192.168.1.1"));
  EXPECT_THAT(facts.skivra.localDomains, ElementsAre("lan.example", "printer.example"));
  ASSERT_THAT(facts.skivra.logs, SizeIs(3));
  EXPECT_EQ(facts.skivra.logs[1].folder, "probe");
  EXPECT_EQ(facts.skivra.logs[1].count, 2);
}

TEST(ReaderFacts, OfAReportFromLinux) {
  const Read read(ReportText::clear());
  expectCommonFacts(read.facts);
  EXPECT_THAT(read.facts.interfaces, SizeIs(2));
  EXPECT_EQ(read.facts.interfaces[0].mtu, 1500);
  EXPECT_THAT(read.facts.interfaces[0].addresses, ElementsAre("192.168.1.20"));
  EXPECT_THAT(read.facts.routes, SizeIs(2));
  EXPECT_TRUE(read.facts.routes[0].isDefault);
  EXPECT_EQ(read.facts.routes[0].gateway, "192.168.1.1");
  EXPECT_EQ(read.facts.routes[1].gateway, "");
  EXPECT_EQ(read.facts.system.version, "Debian GNU/Linux 12 (bookworm)");
}

TEST(ReaderFacts, OfAReportFromMacos) {
  const Read read(ReportText::macos());
  expectCommonFacts(read.facts);
  EXPECT_THAT(read.facts.interfaces, SizeIs(6));
  EXPECT_EQ(read.facts.interfaces[3].name, "en0");
  EXPECT_TRUE(read.facts.interfaces[3].isUp);
  EXPECT_EQ(read.facts.interfaces[3].mtu, 1500);
  EXPECT_THAT(read.facts.interfaces[3].addresses,
              ElementsAre("fe80::4e1:1a2b:3c4d:5e6f", "192.168.1.20"));
  EXPECT_EQ(read.facts.interfaces[5].kind, Interface::Kind::tunnel);
  ASSERT_THAT(read.facts.routes, SizeIs(12));
  EXPECT_TRUE(read.facts.routes[0].isDefault);
  EXPECT_EQ(read.facts.routes[0].interface, "en0");
  EXPECT_FALSE(read.facts.routes[9].isDefault);
  EXPECT_TRUE(read.facts.routes[9].isIpv6);
  EXPECT_EQ(read.facts.nameServers[0].interface, "en0");
  EXPECT_EQ(read.facts.system.version, "macOS 13.6.1 (22G313)");
  EXPECT_EQ(read.facts.system.timeSinceBoot, "3 days, 4 hours, 5 minutes");
}

TEST(ReaderFacts, FactsKnowTheirLines) {
  const Read read(ReportText::bare());
  const Source source = read.facts.ping("ping-sydney")->source;
  std::size_t begin = 0;
  for (std::size_t line = 1; line < source.line; ++line) {
    begin = read.text.find('\n', begin) + 1;
  }
  EXPECT_EQ(read.text.substr(begin, source.text.size()), source.text);
  EXPECT_EQ(read.reading.report.blocks.at(source.block).planned->key, "ping-sydney");
}

TEST(ReaderFacts, NothingComesFromAShortenedBlock) {
  Read read(ReportText::bare().set(
      "interfaces", "lo: flags=73<UP,LOOPBACK>  mtu 65536\n" + std::string(trimmingMarker)));
  // Only at the very end of a block is it a mark.
  EXPECT_THAT(read.facts.interfaces, SizeIs(1));
  std::string text = ReportText::bare().text();
  const std::size_t at = text.find(separator, text.find("/sbin/ifconfig -a"));
  text.replace(at - 30, 30, trimmingMarker);
  EXPECT_THAT(readReport("test", text).facts.interfaces, IsEmpty());
}

TEST(ReaderFacts, ProbesOfOneHopMayBeAnsweredBySeveralHosts) {
  const Read read(ReportText::macos().set(
      "path-api",
      " 1  192.168.1.1 (192.168.1.1)  2.1 ms  2.2 ms  2.3 ms\n"
      " 2  a.example (198.18.7.1)  9.0 ms\n    b.example (198.18.7.2)  9.5 ms *\n"
      " 3  * * *\n 4  api.halvik.example (203.0.113.11)  30.1 ms !H  30.2 ms !H  30.3 ms !H\n",
      "traceroute to api.halvik.example (203.0.113.11), 64 hops max, 72 byte packets\n"));
  const Path& path = *read.facts.path("path-api");
  ASSERT_THAT(path.hops, SizeIs(4));
  EXPECT_EQ(path.hops[1].address, "198.18.7.1");
  EXPECT_EQ(path.hops[1].lost, 1);
  EXPECT_THAT(path.hops[1].timesMs, ElementsAre(9.0, 9.5));
  EXPECT_EQ(path.hops[2].address, "");
  EXPECT_EQ(path.hops[3].note, "!H");
  EXPECT_FALSE(path.isReached());
  EXPECT_EQ(path.slowestStep()->first, 4);
}

TEST(ReaderFacts, PingsByIpv6HaveAnAddressAsWell) {
  const std::string answer = "64 bytes from host (2001:db8::10): icmp_seq=1 ttl=61 time=";
  const Read read(ReportText::bare().set(
      "ping-website", "PING www.halvik.example(www.halvik.example (2001:db8::10)) 56 data bytes\n" +
                          answer + "20.5 ms\n" + answer + "1" + std::string(300, '0') + " ms\n" +
                          answer + "10000000 ms\n" + answer + "10000001 ms\n\n" +
                          "4 packets transmitted, 4 received, 0% packet loss, time 1001ms\n"));
  const Ping& ping = *read.facts.ping("ping-website");
  EXPECT_EQ(ping.address, "2001:db8::10");
  // No answer comes after hours.
  EXPECT_THAT(ping.timesMs, ElementsAre(20.5, 1e7));
  EXPECT_EQ(ping.received, 4);
}

TEST(ReaderFacts, PingsWithoutAnAddressHaveNone) {
  const std::string counts = "5 packets transmitted, 0 received, 100% packet loss, time 1ms\n";
  for (const char* line : {"PING host\n", "PING host (\n", "PING host )\n", "PING )host(\n"}) {
    const Read read(ReportText::bare().set("ping-website", line + counts));
    EXPECT_EQ(read.facts.ping("ping-website")->address, "") << line;
  }
}

TEST(ReaderFacts, ToolsThatFailedAreTold) {
  const Read read(ReportText::bare().set("routes", "", "netstat: sysctl: no such thing\n"));
  ASSERT_THAT(read.facts.toolErrors, SizeIs(1));
  EXPECT_EQ(read.facts.toolErrors[0].kind, "netstat");
  EXPECT_EQ(read.facts.toolErrors[0].source.text, "netstat: sysctl: no such thing");
}

TEST(ReaderFacts, AddressesOfWhichKind) {
  for (const std::string_view address : {"10.1.2.3", "172.16.0.1", "172.31.255.1", "192.168.0.1",
                                         "100.64.0.1", "fd12::1", "::1", "127.0.0.1"}) {
    EXPECT_TRUE(isPrivateAddress(address)) << address;
  }
  for (const std::string_view address :
       {"172.32.0.1", "172.15.0.1", "192.169.0.1", "100.128.0.1", "8.8.8.8", "2001:db8::1", "fdab",
        "1.2.3", "1.2.3.4.5", "10.0.0.256", ""}) {
    EXPECT_FALSE(isPrivateAddress(address)) << address;
  }
}

}  // namespace
}  // namespace reader
