// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "reader/output/text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "report_text.h"

namespace reader {
namespace {

using testing::HasSubstr;
using testing::Not;

std::string textOfReport(const ReportText& report) {
  const std::string text = report.text();
  return textOf(readReport("test", text));
}

TEST(Text, SaysWhatIsMissing) {
  EXPECT_THAT(textOfReport(ReportText::clear()), Not(HasSubstr("Missing")));
  EXPECT_THAT(textOfReport(ReportText::clear().remove("routes")),
              HasSubstr("\nMissing: 1 block: /usr/sbin/netstat -rn\n"));
  EXPECT_THAT(textOfReport(ReportText::clear().remove("routes").remove("interfaces")),
              HasSubstr("\nMissing: 2 blocks, the first of them: /sbin/ifconfig -a\n"));
}

TEST(Text, SaysThatAPageHoldsAReport) {
  const std::string inner = ReportText::bare().text();
  const std::string all = std::to_string(blocksIn("clear_bare.txt"));
  EXPECT_THAT(textOfReport(ReportText::bare()), Not(HasSubstr("Doubtful")));
  EXPECT_THAT(
      textOfReport(ReportText::bare().set("web-block-id", inner)),
      HasSubstr("\nDoubtful: " + all + " of " + all + " blocks stand in the text more than once"));
}

TEST(Text, SaysWhichCommandsPrintedNothing) {
  EXPECT_THAT(textOfReport(ReportText::clear()), Not(HasSubstr("Without any output")));
  EXPECT_THAT(textOfReport(ReportText::clear().set("log", "").set("web-monitor", "")),
              Not(HasSubstr("Without any output")));
  EXPECT_THAT(textOfReport(ReportText::clear().set("routes", "").set("interfaces", "")),
              HasSubstr("\nWithout any output: 2 of " + std::to_string(blocksIn("clear.txt")) +
                        " blocks, the first of them: /sbin/ifconfig -a\n"));
}

TEST(Text, ShowsWhereAMissingBlockNamesTheDomain) {
  EXPECT_THAT(textOfReport(ReportText::clear().remove("domain-b")),
              HasSubstr("\nMissing: 1 block: /usr/bin/dig +time=10 ... @198.51.100.53\n"));
}

}  // namespace
}  // namespace reader
