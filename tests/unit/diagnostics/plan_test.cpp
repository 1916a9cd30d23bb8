// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "diagnostics/plan.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/process_controller.h"

namespace diagnostics {
namespace {

using support::PlannedTest;

// Every role is named after itself, so that a mix-up shows.
Endpoints namedEndpoints() {
  return {.serviceDomain = "serviceDomain",
          .submitUrl = "submitUrl",
          .serviceResolverA = "serviceResolverA",
          .serviceResolverB = "serviceResolverB",
          .thirdPartyResolver = "thirdPartyResolver",
          .rootServerAddress = "rootServerAddress",
          .anycastServerAddress = "anycastServerAddress",
          .myIpQueryName = "myIpQueryName",
          .debugQueryName = "debugQueryName",
          .akamaiWhoamiName = "akamaiWhoamiName",
          .akamaiNameServer = "akamaiNameServer",
          .ultraDnsWhoamiName = "ultraDnsWhoamiName",
          .ultraDnsNameServer = "ultraDnsNameServer",
          .serviceApiHost = "serviceApiHost",
          .serviceMonitorHost = "serviceMonitorHost",
          .blockPageHost = "blockPageHost",
          .categoryHitHost = "categoryHitHost",
          .blockIdHost = "blockIdHost",
          .serviceHttpAddress = "serviceHttpAddress",
          .serviceWebsiteHost = "serviceWebsiteHost",
          .paloAltoRouter = "paloAltoRouter",
          .seattleRouter = "seattleRouter",
          .losAngelesRouter = "losAngelesRouter",
          .chicagoRouter = "chicagoRouter",
          .newYorkRouter = "newYorkRouter",
          .ashburnRouter = "ashburnRouter",
          .londonRouter = "londonRouter",
          .miamiRouter = "miamiRouter",
          .singaporeRouter = "singaporeRouter",
          .frankfurtRouter = "frankfurtRouter",
          .hongKongRouter = "hongKongRouter",
          .amsterdamRouter = "amsterdamRouter",
          .berlinRouter = "berlinRouter",
          .parisRouter = "parisRouter",
          .copenhagenRouter = "copenhagenRouter",
          .dallasRouter = "dallasRouter",
          .bucharestRouter = "bucharestRouter",
          .pragueRouter = "pragueRouter",
          .warsawRouter = "warsawRouter",
          .sydneyRouter = "sydneyRouter",
          .blockedIpAddress = "blockedIpAddress",
          .greyIpAddress = "greyIpAddress",
          .blockIpTestName = "blockIpTestName"};
}

class Recorder final : public CommandStarter {
 public:
  using CommandStarter::startTest;
  void startTest(const std::string& launchPath, const std::vector<std::string>& args,
                 const std::optional<std::string>& comment) override {
    tests.push_back({.launchPath = launchPath, .args = args, .comment = comment});
  }
  std::vector<PlannedTest> tests;
};

const std::string traceroute = "/usr/sbin/traceroute";
const std::string dig = "/usr/bin/dig";
const std::string nslookup = "/usr/bin/nslookup";
const std::string ping = "/sbin/ping";
const std::string curl = "/usr/bin/curl";
const std::string sh = "/bin/sh";
const std::string folder = "/Library/Application Support/Halvik Skivra";
const auto none = std::nullopt;

const std::vector<PlannedTest> sectionA{{dig, {"+time=10", "myIpQueryName"}, none}};

std::vector<PlannedTest> sectionB(const std::string& domain) {
  return {
      {traceroute, {"-I", "-w 2", domain}, none},
      {dig, {"+time=10", domain}, none},
      {dig, {"+time=10", domain, "@serviceResolverA"}, none},
      {dig, {"+time=10", domain, "@serviceResolverB"}, none},
      {dig, {"+time=10", domain, "@thirdPartyResolver"}, none},
  };
}

const std::vector<PlannedTest> sectionC{
    {traceroute, {"-I", "-w 2", "serviceResolverA"}, none},
    {traceroute, {"-I", "-w 2", "serviceResolverB"}, none},
    {traceroute, {"-I", "-w 2", "serviceApiHost"}, none},
    {traceroute, {"-I", "-w 2", "serviceMonitorHost"}, none},
    {traceroute, {"-I", "-w 2", "blockPageHost"}, none},
    {traceroute, {"-I", "-w 2", "categoryHitHost"}, none},
    {"/bin/cat", {"/Library/Application Support/Halvik Skivra/skv_state.plist"}, none},
    {dig, {"@serviceResolverA", "+time=10", "debugQueryName", "txt"}, none},
    {dig, {"@serviceResolverA", "-p", "443", "+time=10", "debugQueryName", "txt"}, none},
    {dig, {"@serviceResolverA", "-p", "5353", "+time=10", "debugQueryName", "txt"}, none},
    {dig, {"+time=10", "debugQueryName", "txt"}, none},
    {dig, {"+time=10", "akamaiWhoamiName"}, none},
    {dig, {"+time=10", "ultraDnsWhoamiName"}, none},
    {dig, {"@serviceResolverA", "+time=10", "myIpQueryName"}, none},
    {dig, {"@akamaiNameServer", "+time=10", "akamaiWhoamiName"}, none},
    {dig, {"@ultraDnsNameServer", "+time=10", "ultraDnsWhoamiName"}, none},
    {nslookup,
     {"-timeout=10", "-class=chaos", "-type=txt", "hostname.bind.", "thirdPartyResolver"},
     none},
    {nslookup,
     {"-timeout=10", "-class=chaos", "-type=txt", "hostname.bind.", "rootServerAddress"},
     none},
    {nslookup,
     {"-timeout=10", "-class=chaos", "-type=txt", "hostname.bind.", "anycastServerAddress"},
     none},
    {ping, {"-c", "5", "serviceWebsiteHost"}, "(serviceWebsiteHost)"},
    {ping, {"-c", "5", "paloAltoRouter"}, "(palo alto router)"},
    {ping, {"-c", "5", "seattleRouter"}, "(seattle router)"},
    {ping, {"-c", "5", "losAngelesRouter"}, "(los angeles router)"},
    {ping, {"-c", "5", "chicagoRouter"}, "(chicago router)"},
    {ping, {"-c", "5", "newYorkRouter"}, "(new york router)"},
    {ping, {"-c", "5", "ashburnRouter"}, "(ashburn router)"},
    {ping, {"-c", "5", "londonRouter"}, "(london router)"},
    {ping, {"-c", "5", "miamiRouter"}, "(miami router)"},
    {ping, {"-c", "5", "singaporeRouter"}, "(singapore router)"},
    {ping, {"-c", "5", "frankfurtRouter"}, "(frankfurt router)"},
    {ping, {"-c", "5", "hongKongRouter"}, "(hong kong router)"},
    {ping, {"-c", "5", "amsterdamRouter"}, "(amsterdam router)"},
    {ping, {"-c", "5", "berlinRouter"}, "(berlin router)"},
    {ping, {"-c", "5", "parisRouter"}, "(paris router)"},
    {ping, {"-c", "5", "copenhagenRouter"}, "(copenhagen router)"},
    {ping, {"-c", "5", "dallasRouter"}, "(dallas router)"},
    {ping, {"-c", "5", "bucharestRouter"}, "(bucharest router)"},
    {ping, {"-c", "5", "pragueRouter"}, "(prague router)"},
    {ping, {"-c", "5", "ashburnRouter"}, "(washington dc router)"},
    {ping, {"-c", "5", "warsawRouter"}, "(warsaw router)"},
    {ping, {"-c", "5", "sydneyRouter"}, "(sydney router)"},
    {"/bin/ps", {"wwaux"}, none},
    {"/sbin/ifconfig", {"-a"}, none},
    {"/usr/sbin/scutil", {"--dns"}, none},
    {"/usr/sbin/netstat", {"-rn"}, none},
    {curl, {"-Ls", "blockIdHost/monitor.php"}, none},
    {curl, {"-Ls", "-c", "/dev/null", "serviceMonitorHost/monitor/"}, none},
    {curl, {"-LIs", "-c", "/dev/null", "blockIdHost/"}, none},
    {curl, {"-s", "blockPageHost/monitor.php"}, none},
    {curl, {"-s", "serviceHttpAddress"}, none},
    {"/usr/sbin/system_profiler", {"SPSoftwareDataType"}, none},
};

const std::vector<PlannedTest> beforeLogs{
    {dig, {"@127.0.0.1", "debugQueryName.", "txt"}, none},
    {"/bin/ls", {folder}, none},
    {"/bin/cat", {folder + "/resolv_orig.conf"}, none},
    {sh, {"-c", "/bin/ls '/Library/Application Support/Halvik Skivra'"}, none},
    {sh, {"-c", "/bin/cat '/Library/Application Support/Halvik Skivra/localdomains'"}, none},
};

const std::vector<PlannedTest> afterLogs{
    {sh,
     {"-c",
      "/usr/bin/tail -n 15000 /var/log/system.log | /usr/bin/egrep -i "
      "\"kernel|launchd|vpn|dns|configd|racoon|brontel\""},
     none},
    {sh, {"-c", "/sbin/ping -c 1 -t 1 blockedIpAddress"}, "(Blocked IP)"},
    {sh, {"-c", "/sbin/route -n get blockedIpAddress"}, "(Blocked IP)"},
    {sh, {"-c", "/usr/bin/curl -v -m 2 blockedIpAddress/some/page"}, "(Page from Blocked IP)"},
    {sh, {"-c", "/sbin/route -n get greyIpAddress"}, "(blockIpTestName)"},
    {sh, {"-c", "/usr/bin/curl -v -m 2 greyIpAddress/favicon.ico"}, "(Allowed page from grey IP)"},
    {sh,
     {"-c", "/usr/bin/curl -v -m 2 greyIpAddress:8081/favicon.ico"},
     "(Allowed page from grey IP)"},
    {sh, {"-c", "/usr/bin/curl -v -m 2 greyIpAddress/malware.htm"}, "(Blocked page from grey IP)"},
    {sh,
     {"-c", "/usr/bin/curl -v -m 2 greyIpAddress:8081/malware.htm"},
     "(Blocked page from grey IP)"},
};

std::vector<PlannedTest> join(const std::vector<std::vector<PlannedTest>>& sections) {
  std::vector<PlannedTest> joined;
  for (const auto& section : sections) {
    joined.insert(joined.end(), section.begin(), section.end());
  }
  return joined;
}

std::vector<PlannedTest> generalTests(const TestDomain& domain) {
  Recorder recorder;
  startGeneralTests(recorder, namedEndpoints(), domain);
  return recorder.tests;
}

std::vector<PlannedTest> skivraTests(const TestDomain& domain) {
  Recorder recorder;
  startSkivraTests(recorder, namedEndpoints(), domain);
  return recorder.tests;
}

TEST(TestPlan, AsksOnlyTheGeneralQuestionsWithoutAUsableDomain) {
  for (const TestDomain& domain : {TestDomain(), TestDomain(""), TestDomain("word")}) {
    EXPECT_THAT(generalTests(domain), testing::ElementsAreArray(join({sectionA, sectionC})));
  }
}

TEST(TestPlan, AsksForADomainWithADotInThreeMoreWays) {
  for (const char* domain : {"example.com", ".", "word.", "http://a.example/page", "\t.\xff"}) {
    EXPECT_THAT(generalTests(domain),
                testing::ElementsAreArray(join({sectionA, sectionB(domain), sectionC})));
  }
}

TEST(TestPlan, AsksTheSkivraForTheDomain) {
  EXPECT_THAT(
      skivraTests("a.example"),
      testing::ElementsAreArray(join({{{dig, {"a.example", "@127.0.0.1"}, none}}, beforeLogs})));
}

TEST(TestPlan, LeavesTheDomainOutWhenItHasNoDot) {
  EXPECT_THAT(skivraTests(""), testing::ElementsAreArray(beforeLogs));
  EXPECT_THAT(skivraTests("word"), testing::ElementsAreArray(beforeLogs));
}

TEST(TestPlan, AsksWithoutAnyArgumentWhenTheDomainIsAbsent) {
  EXPECT_THAT(skivraTests(std::nullopt),
              testing::ElementsAreArray(join({{{dig, {}, none}}, beforeLogs})));
}

TEST(TestPlan, SearchesTheSystemLogAndTriesTheBlockedAddresses) {
  Recorder recorder;
  startSystemLogAndBlockingTests(recorder, namedEndpoints(), 15000);
  EXPECT_THAT(recorder.tests, testing::ElementsAreArray(afterLogs));
}

TEST(TestPlan, TakesTheDomainFromTheOptionThenFromTheField) {
  EXPECT_EQ(makeTestDomain("option.example", "field.example"), "option.example");
  EXPECT_EQ(makeTestDomain("", "field.example"), "field.example");
  EXPECT_EQ(makeTestDomain(std::nullopt, "field.example"), "field.example");
  EXPECT_EQ(makeTestDomain(std::nullopt, ""), "");
  EXPECT_EQ(makeTestDomain("", std::nullopt), std::nullopt);
  EXPECT_EQ(makeTestDomain(std::nullopt, std::nullopt), std::nullopt);
}

TEST(TestPlan, RemovesBlanksFromTheDomainAndNothingElse) {
  EXPECT_EQ(makeTestDomain(" exam ple. com ", std::nullopt), "example.com");
  EXPECT_EQ(makeTestDomain("http://a.b/\tc.", std::nullopt), "http://a.b/\tc.");
  EXPECT_EQ(makeTestDomain("  ", "field.example"), "");
}

}  // namespace
}  // namespace diagnostics
