// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// What is wrong with the machine itself, or with its way out.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "report_text.h"

namespace reader {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// A machine from which nothing gets out.
ReportText cutOff(ReportText report, const std::string& error) {
  report.setAll("ping-", "", "ping: www.halvik.example: Temporary failure in name resolution\n")
      .setAll("path-", "", "api.halvik.example: Temporary failure in name resolution\n")
      .set("path-resolver-a", "", "connect: " + error + "\n")
      .set("path-resolver-b", "", "connect: " + error + "\n")
      .setAll("web-", "")
      .setAll("server-name-", ";; UDP setup failed: network unreachable.\n");
  for (const char* key : {"myip", "debug", "akamai-whoami", "ultradns-whoami"}) {
    report.set(key, digFailure("192.168.1.1#53", "timed out"));
  }
  for (const char* key : {"debug-53", "debug-443", "debug-5353", "myip-a"}) {
    report.set(key, digFailure("192.0.2.53#53", "network unreachable"));
  }
  report.setAll("akamai-direct", "",
                "dig: couldn't get address for 'ns1-1.akamaitech.net': failure\n");
  report.setAll("ultradns-direct", "", "dig: couldn't get address for 'x': failure\n");
  return report;
}

TEST(NoAddress, IsTheOnlyProblem) {
  ReportText report = cutOff(ReportText::bare(), "Network is unreachable");
  report.replace("interfaces", "inet 192.168.1.20 ", "inet 169.254.3.4 ");
  report.replace("routes", "0.0.0.0         192.168.1.1 ", "10.0.0.0        192.168.1.1 ");
  EXPECT_THAT(found(report), ElementsAre("no-address"));
}

TEST(NoAddress, IsNotAnInterfaceThatIsDownBesideOneWithAnAddress) {
  EXPECT_THAT(found(ReportText::bare().set("interfaces",
                                           "eth1: flags=4098<BROADCAST>  mtu 1500\n"
                                           "eth0: flags=4163<UP,RUNNING>  mtu 1500\n"
                                           "        inet 192.168.1.20  netmask 255.255.255.0\n")),
              IsEmpty());
}

TEST(NoDefaultRoute, IsTheOnlyProblem) {
  ReportText report = cutOff(ReportText::bare(), "Network is unreachable");
  report.set("routes",
             "Kernel IP routing table\n"
             "Destination     Gateway         Genmask         Flags   MSS Window  irtt Iface\n"
             "192.168.1.0     0.0.0.0         255.255.255.0   U         0 0          0 eth0\n");
  EXPECT_THAT(found(report), ElementsAre("no-default-route"));
  report.set("interfaces", "");
  EXPECT_THAT(found(report), ElementsAre("no-default-route"));
}

TEST(NoDefaultRoute, IsNotOneInTwoHalves) {
  ReportText report = ReportText::bare();
  report.set("routes",
             "Kernel IP routing table\n"
             "Destination     Gateway         Genmask         Flags   MSS Window  irtt Iface\n"
             "0.0.0.0         192.168.1.1     128.0.0.0       UG        0 0          0 eth0\n"
             "128.0.0.0       192.168.1.1     128.0.0.0       UG        0 0          0 eth0\n");
  EXPECT_THAT(found(report), IsEmpty());
}

TEST(SilentGateway, IsTheOnlyProblem) {
  ReportText report = cutOff(ReportText::bare(), "No route to host");
  report.set("path-resolver-a",
             "traceroute to 192.0.2.53 (192.0.2.53), 30 hops max, 60 byte packets\n"
             " 1  192.168.1.20 (192.168.1.20)  3060.1 ms !H  3060.2 ms !H  3060.3 ms !H\n");
  EXPECT_THAT(found(report), ElementsAre("gateway-silent"));
}

TEST(SilentGateway, IsNotOneBehindWhichSomethingIsSilent) {
  ReportText report = cutOff(ReportText::bare(), "No route to host");
  report.set("path-resolver-a",
             "traceroute to 192.0.2.53 (192.0.2.53), 30 hops max, 60 byte packets\n"
             " 1  192.168.1.1 (192.168.1.1)  3.1 ms  3.2 ms  3.3 ms\n 2  * * *\n 3  * * *\n");
  EXPECT_THAT(found(report), ElementsAre("line-down"));
  EXPECT_THAT(firstText(report), HasSubstr("beyond 192.168.1.1, 1 hop away"));
}

TEST(SmallMtu, IsNamed) {
  ReportText report = ReportText::bare();
  report.replace("interfaces", "mtu 1500", "mtu 1279");
  EXPECT_THAT(found(report), ElementsAre("small-mtu"));
  EXPECT_THAT(firstText(report), HasSubstr("eth0 (1279)"));
}

TEST(SmallMtu, IsNot1280) {
  ReportText report = ReportText::bare();
  report.replace("interfaces", "mtu 1500", "mtu 1280");
  EXPECT_THAT(found(report), IsEmpty());
}

TEST(Vpn, IsATunnelOnTheWayOut) {
  ReportText report = ReportText::macos();
  report.replace("interfaces", "inet6 fe80::9c7d:1122:3344:5566%utun0", "inet 10.8.0.2");
  EXPECT_THAT(found(report), IsEmpty());
  report.replace("routes", "default            192.168.1.1        UGScg             en0",
                 "default            link#15            UCSg              utun0");
  EXPECT_THAT(found(report), ElementsAre("vpn"));
}

TEST(Proxy, ShowsInHeaders) {
  ReportText report = ReportText::bare();
  report.replace("web-block-id-head", "Server: nginx", "Via: 1.1 proxy.office (squid/5.7)");
  EXPECT_THAT(found(report), ElementsAre("warning proxy"));
}

TEST(ToolError, IsAToolThatPrintedNoResult) {
  ReportText report = ReportText::bare();
  report.set("name-servers", "", "/bin/sh: scutil: not found\n");
  EXPECT_THAT(found(report), ElementsAre("warning tool-error"));
  report.set("name-servers", "");
  EXPECT_THAT(found(report), IsEmpty());
}

/// What ifconfig prints of an interface.
std::string interfaceText(const std::string& name, const std::string& flags, const std::string& mtu,
                          const std::string& address) {
  return name + ": flags=1<" + flags + ">" + mtu + "\n        inet " + address + "  netmask x\n";
}

ReportText withoutDefaultRoute(ReportText report) {
  return report.replace("routes", "0.0.0.0         192.168.1.1 ", "10.0.0.0        192.168.1.1 ");
}

TEST(NoAddress, ShowsTheInterfacesThatCouldHaveOne) {
  ReportText report = cutOff(ReportText::bare(), "Network is unreachable");
  report.replace("interfaces", "inet 192.168.1.20 ", "inet 169.254.3.4 ");
  EXPECT_EQ(firstText(report), "No network interface of the machine has an address.");
  EXPECT_THAT(
      firstEvidence(report),
      ElementsAre("interfaces: /sbin/ifconfig -a",
                  "interfaces: eth0: flags=4163<UP,BROADCAST,RUNNING,MULTICAST>  mtu 1500"));
}

TEST(NoAddress, IsOneThatNobodyElseCanUse) {
  struct Row {
    std::string interface;
    bool isUsable;
  };
  const std::vector<Row> rows{
      {interfaceText("eth0", "UP,RUNNING", "", "192.168.1.20"), true},
      {interfaceText("eth0", "BROADCAST", "", "192.168.1.20"), false},
      {interfaceText("lo", "UP,LOOPBACK", "", "192.168.1.20"), false},
      {interfaceText("dummy0", "UP", "", "127.0.0.2"), false},
      {interfaceText("eth0", "UP,RUNNING", "", "169.254.1.20"), false},
      {interfaceText("eth0", "UP,RUNNING", "", "169.254.1.20") + "        inet 10.0.0.1\n", true},
  };
  for (const Row& row : rows) {
    ReportText report = cutOff(ReportText::bare(), "Network is unreachable");
    report.set("interfaces", row.interface);
    report = withoutDefaultRoute(report);
    EXPECT_THAT(found(report), ElementsAre(row.isUsable ? "no-default-route" : "no-address"))
        << row.interface;
  }
}

TEST(NoDefaultRoute, ShowsTheFirstRoutes) {
  ReportText report = cutOff(ReportText::bare(), "Network is unreachable");
  std::string routes =
      "Kernel IP routing table\n"
      "Destination     Gateway         Genmask         Flags   MSS Window  irtt Iface\n";
  const std::string rest = ".0     0.0.0.0         255.255.255.0   U         0 0          0 eth0";
  for (const char* network : {"192.168.1", "192.168.2", "192.168.3", "192.168.4"}) {
    routes += network + rest + "\n";
  }
  report.set("routes", routes);
  EXPECT_EQ(firstText(report), "The machine has no default route.");
  EXPECT_THAT(firstEvidence(report),
              ElementsAre("routes: /usr/sbin/netstat -rn", "routes: 192.168.1" + rest,
                          "routes: 192.168.2" + rest, "routes: 192.168.3" + rest));
}

TEST(NoDefaultRoute, IsNotOneOfIpv6Alone) {
  EXPECT_THAT(found(withoutDefaultRoute(ReportText::bare())), IsEmpty());
  ReportText report = cutOff(withoutDefaultRoute(ReportText::bare()), "Network is unreachable");
  EXPECT_THAT(found(report), ElementsAre("no-default-route"));
}

/// Nothing answers, but for these hops on the way to resolver A.
ReportText withHops(const std::string& hops) {
  return cutOff(ReportText::bare(), "No route to host")
      .set("path-resolver-a",
           "traceroute to 192.0.2.53 (192.0.2.53), 30 hops max, 60 byte packets\n" + hops);
}

const std::string ownHop = " 1  192.168.1.20 (192.168.1.20)  60.1 ms !H  60.2 ms !H  60.3 ms !H\n";

TEST(SilentGateway, ShowsTheRouteToItAndThePaths) {
  const ReportText report = withHops(ownHop);
  EXPECT_EQ(firstText(report), "The gateway does not answer, and nothing behind it does.");
  EXPECT_THAT(
      firstEvidence(report),
      ElementsAre("routes: 0.0.0.0         192.168.1.1     0.0.0.0         UG        0 0          "
                  "0 eth0",
                  "path-resolver-a: traceroute to 192.0.2.53 (192.0.2.53), 30 hops max, 60 byte "
                  "packets",
                  "path-resolver-b: connect: No route to host"));
}

TEST(SilentGateway, IsNotConcludedWithoutBothPaths) {
  EXPECT_THAT(found(withHops(ownHop).set("path-resolver-b", "")),
              testing::Not(testing::Contains("gateway-silent")));
  EXPECT_THAT(found(withHops(" 1  192.168.1.1 (192.168.1.1)  3.1 ms\n").set("path-resolver-b", "")),
              testing::Not(testing::Contains("line-down")));
}

TEST(SilentGateway, IsNotConcludedWithoutADefaultRoute) {
  ReportText report = withHops(ownHop);
  report.set("routes", "");
  EXPECT_THAT(found(report), testing::Not(testing::Contains("gateway-silent")));
  report = ReportText::macos();
  report = cutOff(report, "No route to host");
  report.replace("routes", "default            192.168.1.1        UGScg             en0",
                 "10                 192.168.1.1        UGScg             en0");
  EXPECT_THAT(found(report), testing::Not(testing::Contains("gateway-silent")));
}

TEST(SilentGateway, AnswersNoQueries) {
  ReportText report = withHops(ownHop);
  report.set("debug", digAnswer("", "127.0.0.1#53", "SERVFAIL"));
  EXPECT_THAT(found(report), ElementsAre("gateway-silent"));
  report.set("debug", digAnswer("", "192.168.1.1#53", "SERVFAIL"));
  EXPECT_THAT(found(report), testing::Not(testing::Contains("gateway-silent")));
}

TEST(SilentGateway, IsNotOneBehindWhichSomethingAnswers) {
  ReportText report = withHops(ownHop);
  report.set("ping-website", pingOutput("203.0.113.10", {20}, 1));
  EXPECT_THAT(found(report), testing::Not(testing::Contains("gateway-silent")));
}

TEST(DeadLine, IsDeadBehindTheLastHopThatAnswers) {
  ReportText report = withHops(
      " 1  192.168.1.1 (192.168.1.1)  3.1 ms  3.2 ms  3.3 ms\n"
      " 2  198.18.7.1 (198.18.7.1)  3.1 ms  3.2 ms  3.3 ms\n 3  * * *\n");
  report.set("path-resolver-b",
             "traceroute to 198.51.100.53 (198.51.100.53), 30 hops max, 60 byte packets\n"
             " 1  192.168.1.1 (192.168.1.1)  3.1 ms  3.2 ms  3.3 ms\n"
             " 2  198.18.7.2 (198.18.7.2)  3.1 ms  3.2 ms  3.3 ms\n"
             " 3  192.168.1.20 (192.168.1.20)  60.1 ms !H  60.2 ms !H  60.3 ms !H\n");
  EXPECT_THAT(found(report), ElementsAre("line-down"));
  EXPECT_EQ(firstText(report), "Nothing answers beyond 198.18.7.1, 2 hops away.");
  EXPECT_THAT(
      firstEvidence(report),
      ElementsAre("path-resolver-a: 2  198.18.7.1 (198.18.7.1)  3.1 ms  3.2 ms  3.3 ms",
                  "path-resolver-a: traceroute to 192.0.2.53 (192.0.2.53), 30 hops max, 60 byte "
                  "packets",
                  "path-resolver-b: traceroute to 198.51.100.53 (198.51.100.53), 30 hops max, 60 "
                  "byte packets"));
  report.set("ping-website", pingOutput("203.0.113.10", {20}, 1));
  EXPECT_THAT(found(report), testing::Not(testing::Contains("line-down")));
}

TEST(SmallMtu, IsTrueWithoutANetwork) {
  ReportText report = cutOff(withoutDefaultRoute(ReportText::bare()), "Network is unreachable");
  report.replace("interfaces", "mtu 1500", "mtu 1000");
  EXPECT_THAT(found(report), ElementsAre("no-default-route", "small-mtu"));
}

TEST(SmallMtu, IsThatOfAnInterfaceInUse) {
  const std::vector<std::pair<std::string, bool>> rows{
      {interfaceText("eth1", "UP", " mtu 1200", "10.0.0.1"), true},
      {interfaceText("eth1", "UP", "", "10.0.0.1"), false},
      {interfaceText("eth1", "BROADCAST", " mtu 1200", "10.0.0.1"), false},
      {interfaceText("lo1", "UP,LOOPBACK", " mtu 1200", "10.0.0.1"), false},
      {interfaceText("eth1", "UP", " mtu 1200", "169.254.0.1"), false},
  };
  const std::string usual = interfaceText("eth0", "UP", " mtu 1500", "192.168.1.20");
  for (const auto& [text, isSmall] : rows) {
    ReportText report = ReportText::bare();
    report.set("interfaces", usual + text);
    EXPECT_THAT(firstText(report), isSmall ? "The MTU is below 1280 on eth1 (1200)." : "") << text;
  }
  ReportText report = ReportText::bare();
  report.set("interfaces",
             rows.front().first + usual + interfaceText("eth2", "UP", " mtu 1000", "10.0.1.1"));
  EXPECT_EQ(firstText(report), "The MTU is below 1280 on eth1 (1200) and eth2 (1000).");
  EXPECT_THAT(firstEvidence(report), ElementsAre("interfaces: eth1: flags=1<UP> mtu 1200",
                                                 "interfaces: eth2: flags=1<UP> mtu 1000"));
}

TEST(Vpn, IsNamedWithItsRoute) {
  const std::string routes =
      "Kernel IP routing table\n"
      "Destination     Gateway         Genmask         Flags   MSS Window  irtt Iface\n";
  const std::string byTunnel =
      "0.0.0.0         10.8.0.1        0.0.0.0         UG        0 0          0 tun0";
  ReportText report = ReportText::bare();
  report.set("interfaces", interfaceText("eth0", "UP", "", "192.168.1.20") +
                               interfaceText("tun0", "UP,POINTOPOINT", "", "10.8.0.2"));
  report.set("routes", routes + byTunnel + "\n");
  EXPECT_EQ(firstText(report),
            "A VPN takes the machine's traffic: the way out is the tunnel tun0.");
  EXPECT_THAT(firstEvidence(report),
              ElementsAre("routes: " + byTunnel, "interfaces: tun0: flags=1<UP,POINTOPOINT>"));
  // What it makes of everything else is its own doing.
  report.set("debug", digAnswer("debug.halvik.example.\t60\tIN\tTXT\t\"nobody was asked\"\n"));
  EXPECT_THAT(found(report), ElementsAre("vpn"));
  report.set("interfaces", interfaceText("eth0", "UP", "", "192.168.1.20"));
  EXPECT_THAT(found(report), ElementsAre("service-not-used"));
}

TEST(Vpn, IsNotOneBesideTheWayOut) {
  ReportText report = ReportText::bare();
  report.set("interfaces", interfaceText("eth0", "UP", "", "192.168.1.20") +
                               interfaceText("tun0", "UP,POINTOPOINT", "", "10.8.0.2"));
  report.replace("routes",
                 "192.168.1.0     0.0.0.0         255.255.255.0   U         0 0          0 eth0",
                 "10.8.0.0        0.0.0.0         255.255.255.0   U         0 0          0 tun0");
  EXPECT_THAT(found(report), IsEmpty());
}

TEST(Proxy, ShowsTheHeader) {
  ReportText report = ReportText::bare();
  report.replace("web-block-id-head", "Server: nginx", "Via: 1.1 proxy.office (squid/5.7)");
  EXPECT_EQ(firstText(report), "Web requests go through a proxy.");
  EXPECT_THAT(firstEvidence(report),
              ElementsAre("web-block-id-head: Via: 1.1 proxy.office (squid/5.7)"));
}

TEST(ToolError, NamesEachToolOnce) {
  ReportText report = ReportText::bare();
  report.set("ping-seattle", "", "/bin/sh: ping: not found\n");
  report.set("ping-miami", "", "/bin/sh: ping: not found\n");
  report.set("name-servers", "", "/bin/sh: scutil: not found\n");
  EXPECT_EQ(firstText(report), "Tools printed something else than a result: ping and scutil.");
  EXPECT_THAT(firstEvidence(report), ElementsAre("ping-seattle: /bin/sh: ping: not found",
                                                 "ping-miami: /bin/sh: ping: not found",
                                                 "name-servers: /bin/sh: scutil: not found"));
}

}  // namespace
}  // namespace reader
