// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "reader/rules/questions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace reader {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr std::string_view resolverA = "192.0.2.53";

Facts asked(const std::vector<Query>& queries) {
  Facts facts;
  facts.endpoints.serviceResolverA = resolverA;
  facts.queries = queries;
  return facts;
}

Ping pinged(int sent, int received) {
  Ping ping;
  ping.sent = sent;
  ping.received = received;
  return ping;
}

TEST(Enumerated, JoinsAsPeopleDo) {
  EXPECT_EQ(enumerated({}), "");
  EXPECT_EQ(enumerated({"a"}), "a");
  EXPECT_EQ(enumerated({"a", "b"}), "a and b");
  EXPECT_EQ(enumerated({"a", "b", "c", "d"}), "a, b, c and d");
}

TEST(Shown, HasATenthBelowAHundred) {
  const std::vector<std::pair<double, const char*>> numbers{
      {0, "0"},       {0.4, "0.4"},    {0.04, "0"},
      {0.06, "0.1"},  {0.96, "1"},     {12.54, "12.5"},
      {99.4, "99.4"}, {99.94, "99.9"}, {100.2, "100"},
      {100, "100"},   {313.6, "314"},  {7, "7"},
      {7.9, "7.9"},   {1.2, "1.2"},    {1e300, "1000000000000000"}};
  for (const auto& [number, text] : numbers) {
    EXPECT_EQ(shown(number), text);
  }
}

TEST(AnythingAnswers, NeedsAnAnswerFromBeyondTheLocalNetwork) {
  EXPECT_FALSE(anythingAnswers({}));
  Facts facts;
  facts.pings = {pinged(5, 0), Ping()};
  EXPECT_FALSE(anythingAnswers(facts));
  facts.pings = {pinged(5, 0), pinged(5, 1)};
  EXPECT_TRUE(anythingAnswers(facts));

  facts = {};
  facts.webChecks = {WebCheck()};
  EXPECT_FALSE(anythingAnswers(facts));
  facts.webChecks.front().status = 500;
  EXPECT_TRUE(anythingAnswers(facts));
  facts.webChecks.front() = {.text = "a page"};
  EXPECT_TRUE(anythingAnswers(facts));

  facts = {};
  facts.serverNames = {ServerName()};
  EXPECT_FALSE(anythingAnswers(facts));
  facts.serverNames.push_back({.name = "one"});
  EXPECT_TRUE(anythingAnswers(facts));
}

TEST(AnythingAnswers, KnowsAPathThatArrives) {
  Facts facts;
  facts.paths = {{.address = "198.51.100.1", .hops = {{.address = "198.51.100.2"}}}};
  EXPECT_FALSE(anythingAnswers(facts));
  facts.paths = {{.address = "198.51.100.1", .hops = {{.address = "198.51.100.1"}}}};
  EXPECT_TRUE(anythingAnswers(facts));
  facts.paths = {{.address = "10.0.0.1", .hops = {{.address = "10.0.0.1"}}}};
  EXPECT_FALSE(anythingAnswers(facts));
}

TEST(AnythingAnswers, KnowsAServerThatAnswers) {
  EXPECT_TRUE(anythingAnswers(asked({{.server = resolverA, .status = "NOERROR"}})));
  EXPECT_FALSE(anythingAnswers(asked({{.server = resolverA, .status = "SERVFAIL"}})));
  EXPECT_FALSE(anythingAnswers(asked({{.server = "127.0.0.1", .status = "NOERROR"}})));
  EXPECT_FALSE(anythingAnswers(asked({{.server = "", .status = "NOERROR"}})));
}

TEST(OwnQueries, AreThoseToNoNamedServer) {
  const Facts facts = asked({{.key = "myip"},
                             {.key = "skivra-debug"},
                             {.key = "debug-53", .server = resolverA},
                             {.key = "skivra-domain", .server = "127.0.0.1"}});
  EXPECT_THAT(ownQueries(facts), ElementsAre(facts.queries.data()));
}

TEST(Resolution, IsBrokenIfNoneOfThreeIsAnswered) {
  const Query silent;
  const Query complaint{.status = "SERVFAIL"};
  const Query good{.status = "NXDOMAIN"};
  EXPECT_FALSE(isResolutionBroken(asked({silent, silent})));
  EXPECT_TRUE(isResolutionBroken(asked({silent, silent, complaint})));
  EXPECT_TRUE(isResolutionBroken(asked({silent, silent, complaint, complaint})));
  EXPECT_FALSE(isResolutionBroken(asked({silent, silent, complaint, good})));
  EXPECT_FALSE(isResolutionBroken(asked({good, good, good})));
}

TEST(Port53, IsOpenIfAnyNamedServerAnswersThere) {
  EXPECT_FALSE(isAnybodyAnsweringOnPort53({}));
  EXPECT_TRUE(isAnybodyAnsweringOnPort53(asked({{.server = resolverA, .status = "SERVFAIL"}})));
  EXPECT_FALSE(isAnybodyAnsweringOnPort53(asked({{.server = resolverA}})));
  EXPECT_FALSE(isAnybodyAnsweringOnPort53(asked({{.server = "", .status = "NOERROR"}})));
  EXPECT_FALSE(isAnybodyAnsweringOnPort53(asked({{.server = "10.0.0.1", .status = "NOERROR"}})));
  EXPECT_FALSE(
      isAnybodyAnsweringOnPort53(asked({{.server = resolverA, .port = 443, .status = "NOERROR"}})));
  Facts facts;
  facts.serverNames = {ServerName()};
  EXPECT_FALSE(isAnybodyAnsweringOnPort53(facts));
  facts.serverNames.push_back({.name = "one"});
  EXPECT_TRUE(isAnybodyAnsweringOnPort53(facts));
}

TEST(SilentOnPort, CountsEveryQuestionToResolverA) {
  const Query silent{.server = resolverA, .port = 443};
  const Query answered{.server = resolverA, .port = 443, .status = "NOERROR"};
  const Query otherPort{.server = resolverA, .port = 53};
  const Query otherServer{.server = "198.51.100.53", .port = 443};
  EXPECT_EQ(isSilentOnPort(asked({otherPort, otherServer}), 443), std::nullopt);
  EXPECT_EQ(isSilentOnPort(asked({silent}), 443), true);
  EXPECT_EQ(isSilentOnPort(asked({silent, silent}), 443), true);
  EXPECT_EQ(isSilentOnPort(asked({silent, answered}), 443), false);
  EXPECT_EQ(isSilentOnPort(asked({answered, silent}), 443), false);
  EXPECT_EQ(isSilentOnPort(asked({answered, otherPort, otherServer}), 443), false);
}

TEST(ResolverA, IsSilentIfNoPortAnswers) {
  const auto isSilent = [](const std::vector<std::pair<int, std::string_view>>& ports) {
    std::vector<Query> queries;
    for (const auto& [port, status] : ports) {
      queries.push_back({.server = resolverA, .port = port, .status = status});
    }
    return isResolverASilent(asked(queries));
  };
  EXPECT_FALSE(isSilent({}));
  EXPECT_TRUE(isSilent({{53, ""}, {443, ""}, {5353, ""}}));
  EXPECT_TRUE(isSilent({{53, ""}, {443, ""}}));
  EXPECT_FALSE(isSilent({{53, ""}, {5353, ""}}));
  EXPECT_FALSE(isSilent({{443, ""}, {5353, ""}}));
  EXPECT_FALSE(isSilent({{53, "NOERROR"}, {443, ""}, {5353, ""}}));
  EXPECT_FALSE(isSilent({{53, ""}, {443, "NOERROR"}, {5353, ""}}));
  EXPECT_FALSE(isSilent({{53, ""}, {443, ""}, {5353, "NOERROR"}}));
}

TEST(Skivra, IsThereIfItsFolderOrItsStateIs) {
  Facts facts;
  EXPECT_FALSE(hasSkivra(facts));
  facts.skivra.stateFile = Skivra::File::present;
  EXPECT_TRUE(hasSkivra(facts));
  facts.skivra.isInstalled = false;
  EXPECT_FALSE(hasSkivra(facts));
  facts.skivra = {.isInstalled = true};
  EXPECT_TRUE(hasSkivra(facts));
}

TEST(LossRate, LeavesOutHostsThatNeverAnswer) {
  Facts facts;
  EXPECT_EQ(lossRate(facts), 0);
  facts.pings = {pinged(5, 4), pinged(5, 0), pinged(3, 3), Ping()};
  EXPECT_EQ(lossRate(facts), 0.125);
  facts.pings = {pinged(5, 4), pinged(5, 6)};
  EXPECT_EQ(lossRate(facts), 0.1);
  facts.pings = {pinged(1, 1), pinged(1, 1)};
  EXPECT_EQ(lossRate(facts), 0);
  // More than an int holds, all together.
  constexpr int most = 2'147'483'647;
  facts.pings = {pinged(most, most - 1), pinged(most, 1), pinged(most, 1)};
  EXPECT_NEAR(lossRate(facts), 2.0 / 3, 1e-6);
}

TEST(Loop, ReturnsTwice) {
  const auto isALoop = [](const std::vector<std::string_view>& addresses) {
    Path path;
    for (const std::string_view address : addresses) {
      path.hops.push_back({.address = address});
    }
    return isLoop(path);
  };
  EXPECT_FALSE(isALoop({}));
  EXPECT_FALSE(isALoop({"a", "b", "c", "d"}));
  EXPECT_FALSE(isALoop({"a", "b", "a", "c"}));
  EXPECT_TRUE(isALoop({"a", "b", "a", "b"}));
  EXPECT_TRUE(isALoop({"a", "b", "a", "c", "a"}));
  EXPECT_TRUE(isALoop({"a", "b", "a", "b", "a"}));
  // One that answers for several hops, and hops that do not answer.
  EXPECT_FALSE(isALoop({"a", "a", "a", "a"}));
  EXPECT_FALSE(isALoop({"a", "", "b", "", "c", ""}));
  EXPECT_FALSE(isALoop({"a", "", "a", "", "a"}));
}

TEST(Evidence, IsAddedUpToACount) {
  const std::vector<Source> more{{.line = 1}, {.line = 2}, {.line = 3}};
  std::vector<Source> evidence{{.line = 7}};
  addEvidence(evidence, more, 0);
  EXPECT_THAT(evidence, SizeIs(1));
  addEvidence(evidence, more, 2);
  ASSERT_THAT(evidence, SizeIs(3));
  EXPECT_EQ(evidence[0].line, 7U);
  EXPECT_EQ(evidence[1].line, 1U);
  EXPECT_EQ(evidence[2].line, 2U);
  addEvidence(evidence, more, 9);
  EXPECT_THAT(evidence, SizeIs(6));
  addEvidence(evidence, {}, 9);
  EXPECT_THAT(evidence, SizeIs(6));
}

}  // namespace
}  // namespace reader
