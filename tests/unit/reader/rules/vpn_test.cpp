// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Tunnels on the way out, and what only looks like them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "report_text.h"

namespace reader {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

const std::string routesHeader =
    "Kernel IP routing table\n"
    "Destination     Gateway         Genmask         Flags   MSS Window  irtt Iface\n";
const std::string byEthernet =
    "0.0.0.0         192.168.1.1     0.0.0.0         UG        0 0          0 eth0\n";

std::string defaultRoute(const std::string& name) {
  return "0.0.0.0         0.0.0.0         0.0.0.0         U         0 0          0 " + name + "\n";
}

std::string hostRoute(const std::string& flags, const std::string& name) {
  return "198.18.50.1     192.168.1.1     255.255.255.255 " + flags + "       0 0          0 " +
         name + "\n";
}

std::string interfaceText(const std::string& name, const std::string& flags,
                          const std::string& address) {
  return name + ": flags=1<UP," + flags + ">  mtu 1492\n        inet " + address + "  netmask x\n";
}

/// A machine with an interface beside eth0.
ReportText withLine(const std::string& name, const std::string& address,
                    const std::string& routes) {
  ReportText report = ReportText::bare();
  report.set("interfaces", interfaceText("eth0", "BROADCAST", "192.168.1.20") +
                               interfaceText(name, "POINTOPOINT", address));
  return report.set("routes", routesHeader + routes);
}

TEST(Vpn, IsNotAModem) {
  for (const char* name : {"wwan0", "wwp0s20f0u6", "rmnet0", "pdp_ip0"}) {
    EXPECT_THAT(found(withLine(name, "10.8.0.2", defaultRoute(name))), IsEmpty()) << name;
  }
  EXPECT_THAT(found(withLine("other0", "10.8.0.2", defaultRoute("other0"))), ElementsAre("vpn"));
}

TEST(Vpn, MayBeCalledAsAModem) {
  struct Row {
    const char* address;
    std::string routes;
    bool isVpn;
  };
  const std::string out = defaultRoute("ppp0");
  const std::vector<Row> rows{
      {"198.18.7.20", out, false},
      {"100.64.1.2", out, false},
      {"10.8.0.2", out + hostRoute("UGH", "eth0"), true},
      {"10.8.0.2", out + hostRoute("UH ", "eth0"), false},
      {"10.8.0.2", out + hostRoute("UGH", "ppp0"), false},
      {"198.18.7.20", out + hostRoute("UGH", "eth0"), false},
  };
  for (const Row& row : rows) {
    const auto ids = found(withLine("ppp0", row.address, row.routes));
    EXPECT_EQ(ids, row.isVpn ? std::vector<std::string>{"vpn"} : std::vector<std::string>())
        << row.address << row.routes;
  }
}

TEST(Vpn, IsTheFirstWayOut) {
  EXPECT_THAT(found(withLine("tun0", "10.8.0.2", byEthernet + defaultRoute("tun0"))), IsEmpty());
  EXPECT_THAT(found(withLine("tun0", "10.8.0.2", defaultRoute("tun0") + byEthernet)),
              ElementsAre("vpn"));
}

TEST(Vpn, IsTheWayOutInHalves) {
  const std::string half =
      ".0.0.0         10.8.0.1        128.0.0.0       UG        0 0          0 tun0\n";
  const ReportText report = withLine("tun0", "10.8.0.2", byEthernet + "0" + half + "128" + half);
  EXPECT_THAT(found(report), ElementsAre("vpn"));
  EXPECT_THAT(firstEvidence(report).at(0), StartsWith("routes: 128.0.0.0 "));
  EXPECT_THAT(found(withLine("tun0", "10.8.0.2", byEthernet + "10" + half)), IsEmpty());
}

}  // namespace
}  // namespace reader
