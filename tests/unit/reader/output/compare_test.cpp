// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "reader/output/compare.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "reader/parse/titles.h"
#include "report_text.h"

namespace reader {
namespace {

using testing::HasSubstr;
using testing::Not;

std::string compared(const std::string& before, const std::string& later) {
  return comparisonOf(readReport("a", before), readReport("b", later));
}

ReportText smallMtu() {
  return ReportText::clear().replace("interfaces", "mtu 1500", "mtu 1000");
}

/// The report with its list of interfaces shortened.
std::string shortened(const ReportText& report) {
  std::string text = report.text();
  const std::size_t end = text.find(separator, text.find("/sbin/ifconfig -a"));
  return text.replace(end - 30, 30, trimmingMarker);
}

const std::string finding = "The MTU is below 1280 on eth0 (1000). [small-mtu]\n";
const std::string unknownBefore = "found now, unknown in the earlier report: ";
const std::string unknownLater = "found before, unknown in the later report: ";

TEST(Comparison, SaysWhatIsNewGoneAndStillThere) {
  const std::string with = smallMtu().text();
  const std::string without = ReportText::clear().text();
  EXPECT_EQ(compared(without, with), "a -> b\n\nFindings\nnew: " + finding);
  EXPECT_EQ(compared(with, without), "a -> b\n\nFindings\ngone: " + finding);
  EXPECT_EQ(compared(with, with), "a -> b\n\nFindings\nstill: " + finding);
}

TEST(Comparison, ConcludesNothingFromAShortenedBlock) {
  const std::string with = smallMtu().text();
  const std::string without = shortened(ReportText::clear());
  EXPECT_THAT(compared(with, without), HasSubstr("\nFindings\n" + unknownLater + finding));
  EXPECT_THAT(compared(without, with), HasSubstr("\nFindings\n" + unknownBefore + finding));
  EXPECT_THAT(compared(with, without), Not(HasSubstr("gone: ")));
  EXPECT_THAT(compared(without, with), Not(HasSubstr("new: ")));
}

TEST(Comparison, ConcludesNothingFromABlockThatIsMissingOrEmpty) {
  const std::string with = smallMtu().text();
  EXPECT_THAT(compared(with, ReportText::clear().remove("interfaces").text()),
              HasSubstr("\nFindings\n" + unknownLater + finding));
  EXPECT_THAT(compared(with, ReportText::clear().set("interfaces", "").text()),
              HasSubstr("\nFindings\n" + unknownLater + finding));
  // Another block says nothing about this one.
  EXPECT_THAT(compared(with, ReportText::clear().remove("web-monitor").text()),
              HasSubstr("\ngone: " + finding));
}

TEST(Comparison, TakesASilentCurlForAnAnswer) {
  const std::string error = "<html><head><title>502 Bad Gateway</title></head></html>\n";
  const std::string silent = ReportText::bare().set("web-monitor", "").text();
  EXPECT_THAT(compared(silent, ReportText::bare().text()), HasSubstr("\ngone: "));
  EXPECT_THAT(compared(ReportText::bare().text(), silent), HasSubstr("\nnew: "));
  const std::string failing = ReportText::bare().set("web-monitor", error).text();
  EXPECT_THAT(compared(failing, silent), HasSubstr("\nstill: "));
}

TEST(Comparison, DoesNotTakeAnUnknownStateForAnother) {
  std::string cut = ReportText::clear().text();
  const std::size_t end = cut.find(separator, cut.find("<key>state</key>"));
  cut.replace(end - 30, 30, trimmingMarker);
  EXPECT_THAT(compared(ReportText::clear().text(), cut),
              HasSubstr("\nSkivra: protected -> (unknown)\n"));
}

TEST(Comparison, SeesAnotherWay) {
  const std::string before = ReportText::bare().text();
  const std::string later =
      ReportText::bare().replace("path-api", "198.18.7.1", "198.18.7.9").text();
  EXPECT_THAT(compared(before, later), HasSubstr("\nway to api.halvik.example: "));
  EXPECT_THAT(compared(before, before), Not(HasSubstr("way to")));
}

}  // namespace
}  // namespace reader
