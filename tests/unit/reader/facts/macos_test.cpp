// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// What the tools of macOS print, where a network is not as simple as the one of
// tests/unit/reader/data.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "reader/facts/extract.h"
#include "reader/output/reading.h"
#include "report_text.h"

namespace reader {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/// The facts of a report from macOS with one block changed, and the text that they point into.
struct Read {
  Read(std::string_view key, std::string_view output, std::string_view error = {})
      : text(ReportText::macos().set(key, output, error).text()),
        reading(readReport("test", text)),
        facts(reading.facts) {}
  std::string text;
  ReportReading reading;
  const Facts& facts;
};

template <typename Value>
std::vector<Value> columnOf(const auto& rows, Value std::decay_t<decltype(rows[0])>::* field) {
  std::vector<Value> column;
  for (const auto& row : rows) {
    column.push_back(row.*field);
  }
  return column;
}

TEST(ReaderFactsOfMacos, PingWithTimeouts) {
  const Read read("ping-sydney",
                  "PING router.syd.halvik.example (192.0.2.121): 56 data bytes\n"
                  "64 bytes from 192.0.2.121: icmp_seq=0 ttl=52 time=281.337 ms\n"
                  "Request timeout for icmp_seq 1\n"
                  "64 bytes from 192.0.2.121: icmp_seq=2 ttl=52 time=279.874 ms\n"
                  "64 bytes from 192.0.2.121: icmp_seq=2 ttl=52 time=283.012 ms (DUP!)\n"
                  "Request timeout for icmp_seq 3\n"
                  "64 bytes from 192.0.2.121: icmp_seq=4 ttl=52 time=280.105 ms\n\n"
                  "--- router.syd.halvik.example ping statistics ---\n"
                  "5 packets transmitted, 3 packets received, +1 duplicates, 40.0% packet loss\n"
                  "round-trip min/avg/max/stddev = 279.874/281.082/283.012/1.227 ms\n");
  const Ping& ping = *read.facts.ping("ping-sydney");
  EXPECT_EQ(ping.address, "192.0.2.121");
  EXPECT_EQ(ping.sent, 5);
  EXPECT_EQ(ping.received, 3);
  EXPECT_EQ(ping.lossPercent(), 40);
  EXPECT_THAT(ping.timesMs, ElementsAre(281.337, 279.874, 280.105));
  EXPECT_EQ(ping.medianMs(), 280.105);
  EXPECT_EQ(ping.error, "");
}

TEST(ReaderFactsOfMacos, PingWithoutARoute) {
  const Read read("ping-sydney",
                  "PING router.syd.halvik.example (192.0.2.121): 56 data bytes\n"
                  "Request timeout for icmp_seq 0\nRequest timeout for icmp_seq 1\n"
                  "Request timeout for icmp_seq 2\nRequest timeout for icmp_seq 3\n\n"
                  "--- router.syd.halvik.example ping statistics ---\n"
                  "5 packets transmitted, 0 packets received, 100.0% packet loss\n",
                  "ping: sendto: No route to host\nping: sendto: No route to host\n");
  const Ping& ping = *read.facts.ping("ping-sydney");
  EXPECT_EQ(ping.sent, 5);
  EXPECT_EQ(ping.received, 0);
  EXPECT_EQ(ping.error, "ping: sendto: No route to host");
  EXPECT_EQ(ping.source.text, "5 packets transmitted, 0 packets received, 100.0% packet loss");
}

TEST(ReaderFactsOfMacos, PingWithoutAName) {
  const Read read("ping-sydney", "",
                  "ping: cannot resolve router.syd.halvik.example: Unknown host\n");
  const Ping& ping = *read.facts.ping("ping-sydney");
  EXPECT_EQ(ping.sent, std::nullopt);
  EXPECT_EQ(ping.error, "ping: cannot resolve router.syd.halvik.example: Unknown host");
  EXPECT_THAT(read.facts.toolErrors, IsEmpty());
}

TEST(ReaderFactsOfMacos, PingThatARouterRefuses) {
  const std::string_view header =
      "Vr HL TOS  Len   ID Flg  off TTL Pro  cks      Src      Dst\n"
      " 4  5  00 5400 c2b8   0 0000  40  01 9d5e 192.168.1.20  192.0.2.121 \n\n";
  for (const std::string_view said :
       {"Destination Host Unreachable", "Destination Net Unreachable",
        "Communication prohibited by filter", "Time to live exceeded"}) {
    const Read read("ping-sydney",
                    "PING router.syd.halvik.example (192.0.2.121): 56 data bytes\n"
                    "92 bytes from gateway.isp.example (198.18.7.1): " +
                        std::string(said) + '\n' + std::string(header) +
                        "Request timeout for icmp_seq 0\n"
                        "--- router.syd.halvik.example ping statistics ---\n"
                        "1 packets transmitted, 0 packets received, 100.0% packet loss\n");
    const Ping& ping = *read.facts.ping("ping-sydney");
    EXPECT_EQ(ping.error, "92 bytes from gateway.isp.example (198.18.7.1): " + std::string(said));
    EXPECT_THAT(ping.timesMs, IsEmpty());
  }
}

TEST(ReaderFactsOfMacos, TracerouteToOneOfSeveralAddresses) {
  const Read read(
      "path-api",
      " 1  192.168.1.1 (192.168.1.1)  2.114 ms  1.902 ms  1.876 ms\n"
      " 2  * * *\n"
      " 3  exchange.example (198.18.0.1)  11.204 ms *  11.377 ms\n"
      " 4  api.halvik.example (203.0.113.11)  20.031 ms !  19.807 ms !  19.912 ms !\n",
      "traceroute: Warning: api.halvik.example has multiple addresses; using "
      "203.0.113.11\n"
      "traceroute to api.halvik.example (203.0.113.11), 64 hops max, 72 byte packets\n");
  const Path& path = *read.facts.path("path-api");
  EXPECT_EQ(path.address, "203.0.113.11");
  EXPECT_EQ(path.error, "");
  ASSERT_THAT(path.hops, SizeIs(4));
  EXPECT_THAT(columnOf(path.hops, &Hop::lost), ElementsAre(0, 3, 1, 0));
  EXPECT_THAT(columnOf(path.hops, &Hop::name),
              ElementsAre("192.168.1.1", "", "exchange.example", "api.halvik.example"));
  // An answer whose time to live is used up is an answer.
  EXPECT_EQ(path.hops[3].note, "");
  EXPECT_TRUE(path.isReached());
}

TEST(ReaderFactsOfMacos, TracerouteWithoutARoute) {
  const Read read("path-api",
                  " 1 traceroute: wrote api.halvik.example 72 chars, ret=-1\n"
                  " *traceroute: wrote api.halvik.example 72 chars, ret=-1\n"
                  " *traceroute: wrote api.halvik.example 72 chars, ret=-1\n *\n"
                  " 2 traceroute: wrote api.halvik.example 72 chars, ret=-1\n"
                  " *\n",
                  "traceroute to api.halvik.example (203.0.113.11), 64 hops max, 72 byte packets\n"
                  "traceroute: sendto: No route to host\n"
                  "traceroute: sendto: No route to host\n");
  const Path& path = *read.facts.path("path-api");
  EXPECT_EQ(path.error, "traceroute: sendto: No route to host");
  EXPECT_THAT(columnOf(path.hops, &Hop::number), ElementsAre(1, 2));
  EXPECT_THAT(columnOf(path.hops, &Hop::name), ElementsAre("", ""));
  EXPECT_THAT(columnOf(path.hops, &Hop::lost), ElementsAre(3, 1));
  EXPECT_EQ(path.end(), nullptr);
  EXPECT_THAT(read.facts.toolErrors, IsEmpty());
}

TEST(ReaderFactsOfMacos, RoutesWithoutAWayOut) {
  // Only an interface's own traffic takes a route with the flag I.
  const Read read("routes",
                  "Routing tables\n\nInternet:\n"
                  "Destination        Gateway            Flags               Netif Expire\n"
                  "127                127.0.0.1          UCS                   lo0       \n"
                  "127.0.0.1          127.0.0.1          UH                    lo0       \n"
                  "169.254            link#6             UCS                   en0      !\n\n"
                  "Internet6:\n"
                  "Destination                             Gateway                                 "
                  "Flags               Netif Expire\n"
                  "default                                 fe80::%utun0                            "
                  "UGcIg               utun0       \n"
                  "default                                 fe80::%utun1                            "
                  "UGcIg               utun1       \n"
                  "::1                                     ::1                                     "
                  "UHL                   lo0       \n");
  ASSERT_THAT(read.facts.routes, SizeIs(6));
  EXPECT_THAT(columnOf(read.facts.routes, &Route::isDefault),
              ElementsAre(false, false, false, false, false, false));
  EXPECT_THAT(columnOf(read.facts.routes, &Route::isIpv6),
              ElementsAre(false, false, false, true, true, true));
  EXPECT_EQ(read.facts.routes[2].gateway, "");
}

TEST(ReaderFactsOfMacos, RoutesOfTwoInterfacesInTheOldForm) {
  const Read read(
      "routes",
      "Routing tables\n\nInternet:\n"
      "Destination        Gateway            Flags        Refs      Use   Netif Expire\n"
      "default            192.168.1.1        UGSc           93        0     en4\n"
      "default            192.168.2.1        UGScI          12        0     en0\n"
      "192.168.1.1        8c:3b:ad:1:2:3     UHLWIir        95      512     en4   1174\n\n"
      "Internet6:\n"
      "Destination                             Gateway                         Flags   "
      "      Netif Expire\n"
      "default                                 fe80::1%en4                     UGc     "
      "        en4\n");
  ASSERT_THAT(read.facts.routes, SizeIs(4));
  EXPECT_THAT(columnOf(read.facts.routes, &Route::isDefault),
              ElementsAre(true, false, false, true));
  EXPECT_THAT(columnOf(read.facts.routes, &Route::interface),
              ElementsAre("en4", "en0", "en4", "en4"));
  EXPECT_EQ(read.facts.routes[3].gateway, "fe80::1%en4");
}

TEST(ReaderFactsOfMacos, RoutesThroughATunnel) {
  const Read whole("routes",
                   "Routing tables\n\nInternet:\n"
                   "Destination        Gateway            Flags               Netif Expire\n"
                   "default            link#20            UCSg                utun0       \n"
                   "default            192.168.1.1        UGScIg                en0       \n"
                   "10.8/24            10.8.0.2           UGSc                utun0       \n");
  EXPECT_THAT(columnOf(whole.facts.routes, &Route::isDefault), ElementsAre(true, false, false));
  EXPECT_EQ(whole.facts.routes[0].gateway, "");
  EXPECT_EQ(whole.facts.routes[0].interface, "utun0");
  EXPECT_THAT(found(whole.text), ElementsAre("vpn"));
  const Read halves("routes",
                    "Routing tables\n\nInternet:\n"
                    "Destination        Gateway            Flags               Netif Expire\n"
                    "0/1                10.8.0.1           UGSc                utun0       \n"
                    "default            192.168.1.1        UGScg                 en0       \n"
                    "128.0/1            10.8.0.1           UGSc                utun0       \n");
  EXPECT_THAT(columnOf(halves.facts.routes, &Route::isDefault), ElementsAre(true, true, true));
  EXPECT_THAT(found(halves.text), ElementsAre("vpn"));
}

TEST(ReaderFactsOfMacos, Interfaces) {
  const Read read(
      "interfaces",
      "lo0: flags=8049<UP,LOOPBACK,RUNNING,MULTICAST> mtu 16384\n"
      "\toptions=1203<RXCSUM,TXCSUM,TXSTATUS,SW_TIMESTAMP>\n\tinet 127.0.0.1 netmask 0xff000000\n"
      "XHC20: flags=0<> mtu 0\n"
      "anpi0: flags=8863<UP,BROADCAST,SMART,RUNNING,SIMPLEX,MULTICAST> mtu 1500\n"
      "\tether 12:34:56:78:9a:bc\n\tmedia: none\n\tstatus: inactive\n"
      "en0: flags=8863<UP,BROADCAST,SMART,RUNNING,SIMPLEX,MULTICAST> mtu 1500\n"
      "\toptions=6460<TSO4,TSO6,CHANNEL_IO,PARTIAL_CSUM,ZEROINVERT_CSUM>\n"
      "\tether 3c:22:fb:01:02:03\n"
      "\tinet6 fe80::10d2:9b2a:ab12:cd34%en0 prefixlen 64 secured scopeid 0xb \n"
      "\tinet 192.168.1.20 netmask 0xffffff00 broadcast 192.168.1.255\n"
      "\tinet6 2001:db8:1:2:1c0a:2f3e:aa01:bb02 prefixlen 64 autoconf secured \n"
      "\tinet6 2001:db8:1:2:65b1:93cd:0102:0304 prefixlen 64 autoconf temporary \n"
      "\tmedia: autoselect\n\tstatus: active\n"
      "en5: flags=8822<BROADCAST,SMART,SIMPLEX,MULTICAST> mtu 1500\n\tstatus: inactive\n"
      "bridge0: flags=8863<UP,BROADCAST,SMART,RUNNING,SIMPLEX,MULTICAST> mtu 1500\n"
      "\tmember: en1 flags=3<LEARNING,DISCOVER>\n"
      "utun3: flags=8051<UP,POINTOPOINT,RUNNING,MULTICAST> mtu 1000\n"
      "\tinet6 fe80::ce81:b1c:bd2c:69e%utun3 prefixlen 64 scopeid 0x12 \n"
      "utun4: flags=8051<UP,POINTOPOINT,RUNNING,MULTICAST> mtu 1400\n"
      "\tinet 10.8.0.2 --> 10.8.0.1 netmask 0xffffffff\n");
  const std::vector<Interface>& interfaces = read.facts.interfaces;
  EXPECT_THAT(columnOf(interfaces, &Interface::name),
              ElementsAre("lo0", "XHC20", "anpi0", "en0", "en5", "bridge0", "utun3", "utun4"));
  EXPECT_THAT(columnOf(interfaces, &Interface::isUp),
              ElementsAre(true, false, true, true, false, true, true, true));
  EXPECT_THAT(columnOf(interfaces, &Interface::mtu),
              ElementsAre(16384, 0, 1500, 1500, 1500, 1500, 1000, 1400));
  EXPECT_THAT(interfaces[3].addresses,
              ElementsAre("fe80::10d2:9b2a:ab12:cd34", "192.168.1.20",
                          "2001:db8:1:2:1c0a:2f3e:aa01:bb02", "2001:db8:1:2:65b1:93cd:0102:0304"));
  EXPECT_EQ(interfaces[3].kind, Interface::Kind::ethernet);
  EXPECT_EQ(interfaces[5].kind, Interface::Kind::other);
  EXPECT_EQ(interfaces[7].kind, Interface::Kind::tunnel);
  EXPECT_THAT(interfaces[7].addresses, ElementsAre("10.8.0.2"));
  // macOS has small tunnels of its own, with no address but the one that they give themselves.
  EXPECT_THAT(read.reading.findings, IsEmpty());
}

TEST(ReaderFactsOfMacos, NameServersOfSeveralResolvers) {
  const Read read(
      "name-servers",
      "DNS configuration\n\nresolver #1\n  search domain[0] : lan.example\n"
      "  search domain[1] : corp.example\n"
      "  nameserver[0] : 127.0.0.1\n  nameserver[1] : fe80::1%en0\n"
      "  if_index : 11 (en0)\n"
      "  flags    : Request A records, Request AAAA records\n"
      "  reach    : 0x00020002 (Reachable,Directly Reachable Address)\n\n"
      "resolver #2\n  domain   : local\n  options  : mdns\n  timeout  : 5\n"
      "  flags    : Request A records\n  reach    : 0x00000000 (Not Reachable)\n"
      "  order    : 300000\n\n"
      "resolver #3\n  domain   : corp.example\n  nameserver[0] : 10.8.0.1\n"
      "  if_index : 20 (utun4)\n  flags    : Supplemental, Request A records\n"
      "  reach    : 0x00000003 (Reachable,Transient Connection)\n  order    : 102000\n\n"
      "DNS configuration (for scoped queries)\n\nresolver #1\n"
      "  nameserver[0] : 192.168.1.1\n  if_index : 11 (en0)\n"
      "  flags    : Scoped, Request A records\n");
  const std::vector<NameServer>& servers = read.facts.nameServers;
  EXPECT_THAT(columnOf(servers, &NameServer::address),
              ElementsAre("127.0.0.1", "fe80::1%en0", "10.8.0.1"));
  EXPECT_THAT(columnOf(servers, &NameServer::interface), ElementsAre("en0", "en0", "utun4"));
  EXPECT_THAT(columnOf(servers, &NameServer::domain), ElementsAre("", "", "corp.example"));
  EXPECT_THAT(columnOf(servers, &NameServer::resolver), ElementsAre(1, 1, 3));
}

TEST(ReaderFactsOfMacos, NoNameServersAtAll) {
  const Read read("name-servers", "No DNS configuration available\n");
  EXPECT_TRUE(read.facts.nameServerList);
  EXPECT_THAT(read.facts.nameServers, IsEmpty());
  EXPECT_THAT(read.facts.toolErrors, IsEmpty());
}

TEST(ReaderFactsOfMacos, OfAMachineWithoutAWayOut) {
  const std::string noAnswer =
      "\n; <<>> DiG 9.10.6 <<>> something\n;; global options: +cmd\n"
      ";; connection timed out; no servers could be reached\n";
  ReportText report = ReportText::macos();
  for (const std::string_view key :
       {"myip", "domain-", "debug", "akamai-", "ultradns-", "skivra-domain", "skivra-debug"}) {
    report.setAll(key, noAnswer);
  }
  report.setAll("server-name-", ";; connection timed out; no servers could be reached\n\n")
      .setAll("ping-", "", "ping: cannot resolve router.halvik.example: Unknown host\n")
      .setAll("path-", " 1 traceroute: wrote 192.0.2.53 72 chars, ret=-1\n *\n",
              "traceroute to 192.0.2.53 (192.0.2.53), 64 hops max, 72 byte packets\n"
              "traceroute: sendto: No route to host\n")
      .setAll("web-", "")
      .replace("routes", "default            192.168.1.1        UGScg             en0\n", "");
  EXPECT_THAT(found(report), ElementsAre("no-default-route"));
}

TEST(ReaderFactsOfMacos, AnOldSystem) {
  const Read read(
      "system",
      "Software:\n\n    System Software Overview:\n\n"
      "      System Version: OS X 10.11.6 (15G22010)\n"
      "      Kernel Version: Darwin 15.6.0\n      Boot Volume: Macintosh HD\n"
      "      Boot Mode: Normal\n      Computer Name: Zoë’s MacBook Air (2)\n"
      "      User Name: Zoë Example (zoe)\n      Secure Virtual Memory: Enabled\n"
      "      System Integrity Protection: Enabled\n      Time since boot: 12 days 3:41\n\n");
  EXPECT_EQ(read.facts.system.version, "OS X 10.11.6 (15G22010)");
  EXPECT_EQ(read.facts.system.computer, "Zoë’s MacBook Air (2)");
  EXPECT_EQ(read.facts.system.user, "Zoë Example (zoe)");
  EXPECT_EQ(read.facts.system.timeSinceBoot, "12 days 3:41");
}

}  // namespace
}  // namespace reader
