// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Round trips that take long, or now and then.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "report_text.h"

namespace reader {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

std::string times(const std::vector<double>& timesMs) {
  return pingOutput("192.0.2.102", timesMs, timesMs.size());
}

const std::vector<std::string> cities{"ping-berlin",    "ping-paris",  "ping-prague",
                                      "ping-frankfurt", "ping-warsaw", "ping-london"};

/// The web site and so many cities, the first of them with other times.
ReportText withTimes(std::size_t count, const std::vector<double>& timesMs, std::size_t otherCount,
                     const std::vector<double>& otherMs) {
  ReportText report = ReportText::bare();
  report.setAll("ping-", "").set("ping-website", times(timesMs));
  for (std::size_t i = 0; i < count; ++i) {
    report.set(cities.at(i), times(i < otherCount ? otherMs : timesMs));
  }
  return report;
}

TEST(HighDelay, IsFarFromEveryCity) {
  ReportText report = ReportText::bare();
  report.setAll("ping-", times({290, 280, 270, 300, 310}))
      .set("ping-sydney", times({252}))
      .set("ping-miami", times({251, 250, 300}))
      .set("ping-dallas", times({253, 254}));
  EXPECT_THAT(found(report), ElementsAre("high-delay"));
  EXPECT_EQ(firstText(report),
            "Every round trip takes long: even the nearest city, miami, is 250 ms away.");
  EXPECT_THAT(
      firstEvidence(report),
      ElementsAre("ping-miami: 3 packets transmitted, 3 received, 0% packet loss, time 4006ms",
                  "ping-sydney: 1 packets transmitted, 1 received, 0% packet loss, time 4006ms",
                  "ping-dallas: 2 packets transmitted, 2 received, 0% packet loss, time 4006ms"));
  report.set("ping-miami", times({251, 249.9, 300}));
  EXPECT_THAT(found(report), IsEmpty());
}

TEST(HighDelay, NeedsSeveralCities) {
  EXPECT_THAT(found(withTimes(5, {260}, 0, {})), ElementsAre("high-delay"));
  EXPECT_THAT(found(withTimes(4, {260}, 0, {})), IsEmpty());
}

TEST(HighDelay, MayBeThatOfAVpn) {
  ReportText report = ReportText::macos();
  report.setAll("ping-", times({260, 261, 262}));
  EXPECT_THAT(found(report), ElementsAre("high-delay"));
  report.replace("routes", "default            192.168.1.1        UGScg             en0",
                 "default            link#15            UCSg              utun0");
  report.replace("interfaces", "inet6 fe80::9c7d:1122:3344:5566%utun0", "inet 10.8.0.2");
  EXPECT_THAT(found(report), ElementsAre("vpn"));
}

TEST(UnevenDelay, IsWhenMoreThanTheLongestRoundTripIsSlow) {
  EXPECT_THAT(found(withTimes(5, {20, 400, 171}, 0, {})), ElementsAre("uneven-delay"));
  EXPECT_THAT(found(withTimes(5, {400, 20, 170}, 0, {})), IsEmpty());
  EXPECT_THAT(found(withTimes(5, {171, 20}, 0, {})), IsEmpty());
  EXPECT_THAT(found(withTimes(5, {200}, 0, {})), IsEmpty());
  EXPECT_THAT(found(withTimes(5, {20, 30, 400, 200, 40}, 0, {})), ElementsAre("uneven-delay"));
  EXPECT_THAT(found(withTimes(5, {400, 200, 20, 30, 40}, 0, {})), ElementsAre("uneven-delay"));
  EXPECT_THAT(found(withTimes(5, {20, 30, 400, 40, 40}, 0, {})), IsEmpty());
}

TEST(UnevenDelay, IsThatOfHalfOfSeveralCities) {
  const std::vector<double> even{30, 31, 32};
  const std::vector<double> uneven{20, 200, 400};
  EXPECT_THAT(found(withTimes(6, even, 3, uneven)), ElementsAre("uneven-delay"));
  EXPECT_THAT(found(withTimes(6, even, 2, uneven)), IsEmpty());
  EXPECT_THAT(found(withTimes(5, even, 2, uneven)), IsEmpty());
  EXPECT_THAT(found(withTimes(5, even, 3, uneven)), ElementsAre("uneven-delay"));
  EXPECT_THAT(found(withTimes(4, even, 4, uneven)), IsEmpty());
}

TEST(UnevenDelay, TellsTheWidestOfThem) {
  ReportText report = withTimes(6, {30, 31, 32}, 2, {20, 200, 400});
  report.set("ping-frankfurt", times({20, 250, 500.4}));
  EXPECT_EQ(firstText(report),
            "Round trips are very uneven: towards 3 of 6 cities they differ by up to 480 ms.");
  const std::string counts = ": 3 packets transmitted, 3 received, 0% packet loss, time 4006ms";
  EXPECT_THAT(firstEvidence(report),
              testing::UnorderedElementsAre("ping-berlin" + counts, "ping-paris" + counts,
                                            "ping-frankfurt" + counts));
  report.set("ping-berlin", times({20, 250, 600}));
  EXPECT_EQ(firstText(report),
            "Round trips are very uneven: towards 3 of 6 cities they differ by up to 580 ms.");
  EXPECT_THAT(firstEvidence(withTimes(6, {30}, 5, {20, 200, 400})), SizeIs(4));
}

TEST(UnevenDelay, MayMakeACitySlow) {
  ReportText report = withTimes(5, {20, 200, 400}, 0, {});
  report.set("ping-london", times({784, 785, 786}));
  EXPECT_THAT(found(report), ElementsAre("uneven-delay"));
}

}  // namespace
}  // namespace reader
