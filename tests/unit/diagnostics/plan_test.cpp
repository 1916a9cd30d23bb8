// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "diagnostics/plan.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fstream>

#include "support/recorded_plan.h"

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

std::string withoutBraces(std::string text) {
  std::erase_if(text, [](char c) { return c == '{' || c == '}'; });
  return text;
}

// A section of the plan as plan.json has it, with the names of the roles in their places.
std::vector<PlannedTest> section(const std::string& name, const std::string& domain = "") {
  static const nlohmann::json plan = nlohmann::json::parse(std::ifstream(HALVIK_PLAN));
  std::vector<PlannedTest> tests;
  for (const nlohmann::json& command : plan.at(name)) {
    PlannedTest test{.launchPath = command.at(0).get<std::string>(),
                     .args = command.at(1).get<std::vector<std::string>>(),
                     .comment = std::nullopt};
    for (std::string& argument : test.args) {
      argument = argument == "{domain}" ? domain : withoutBraces(argument);
    }
    if (command.size() > 2) {
      test.comment = withoutBraces(command.at(2).get<std::string>());
    }
    tests.push_back(test);
  }
  return tests;
}

std::vector<PlannedTest> join(const std::vector<std::vector<PlannedTest>>& sections) {
  std::vector<PlannedTest> joined;
  for (const auto& tests : sections) {
    joined.insert(joined.end(), tests.begin(), tests.end());
  }
  return joined;
}

std::vector<PlannedTest> generalTests(const TestDomain& domain) {
  return support::generalTests(namedEndpoints(), domain);
}

std::vector<PlannedTest> skivraTests(const TestDomain& domain) {
  return support::skivraTests(namedEndpoints(), domain);
}

TEST(TestPlan, AsksOnlyTheGeneralQuestionsWithoutAUsableDomain) {
  for (const TestDomain& domain : {TestDomain(), TestDomain(""), TestDomain("word")}) {
    EXPECT_THAT(generalTests(domain),
                testing::ElementsAreArray(join({section("first"), section("general")})));
  }
}

TEST(TestPlan, AsksForADomainWithADotInThreeMoreWays) {
  for (const char* domain : {"example.com", ".", "word.", "http://a.example/page", "\t.\xff"}) {
    EXPECT_THAT(generalTests(domain),
                testing::ElementsAreArray(
                    join({section("first"), section("domain", domain), section("general")})));
  }
}

TEST(TestPlan, AsksTheSkivraForTheDomain) {
  EXPECT_THAT(skivraTests("a.example"),
              testing::ElementsAreArray(join(
                  {section("skivra with a domain", "a.example"), section("before the logs")})));
}

TEST(TestPlan, LeavesTheDomainOutWhenItHasNoDot) {
  EXPECT_THAT(skivraTests(""), testing::ElementsAreArray(section("before the logs")));
  EXPECT_THAT(skivraTests("word"), testing::ElementsAreArray(section("before the logs")));
}

TEST(TestPlan, AsksWithoutAnyArgumentWhenTheDomainIsAbsent) {
  EXPECT_THAT(skivraTests(std::nullopt),
              testing::ElementsAreArray(
                  join({section("skivra without a domain"), section("before the logs")})));
}

TEST(TestPlan, SearchesTheSystemLogAndTriesTheBlockedAddresses) {
  EXPECT_THAT(support::systemLogAndBlockingTests(namedEndpoints()),
              testing::ElementsAreArray(section("after the logs")));
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

using Paths = std::vector<std::string>;

TEST(BeaconLogs, StandInThreeFoldersInAFixedOrder) {
  EXPECT_EQ(beaconLogFolders(),
            (Paths{"/Library/Application Support/Halvik Skivra/beacon-logs/ipblock/",
                   "/Library/Application Support/Halvik Skivra/beacon-logs/probe/",
                   "/Library/Application Support/Halvik Skivra/beacon-logs/service/"}));
}

TEST(BeaconLogs, AreReadFromTheOldestToTheNewest) {
  EXPECT_EQ(orderByCreation("/logs/", {{"a", 10'00}, {"b", 9'00}, {"c", 11'00}}),
            (Paths{"/logs/b", "/logs/a", "/logs/c"}));
}

TEST(BeaconLogs, OfTheSameAgeAreOrderedByName) {
  EXPECT_EQ(orderByCreation("/logs/", {{"b", 1}, {"a", 1}, {"c", 0}}),
            (Paths{"/logs/c", "/logs/a", "/logs/b"}));
}

TEST(BeaconLogs, AreReadByAShellThatSeesTheirNameUnescaped) {
  EXPECT_EQ(readerCommandLine("/logs/a b.log"), "cat \"/logs/a b.log\"");
  EXPECT_EQ(readerCommandLine("/logs/$x`y\"z"), "cat \"/logs/$x`y\"z\"");
}

}  // namespace
}  // namespace diagnostics
