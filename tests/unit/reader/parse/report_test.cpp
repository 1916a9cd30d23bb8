// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "reader/parse/report.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "reader/parse/titles.h"
#include "report_text.h"

namespace reader {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const Plan& plan() {
  static const Plan plan(diagnostics::builtInEndpoints());
  return plan;
}

std::string title(const std::string& name) {
  return std::string(separator) + "Results for: " + name + '\n';
}

const Block& blockOf(const Report& report, std::string_view key) {
  const auto found = std::ranges::find_if(report.blocks, [&](const Block& block) {
    return block.planned != nullptr && block.planned->key == key;
  });
  if (found == report.blocks.end()) {
    throw std::logic_error("no such block");
  }
  return *found;
}

TEST(ReaderParse, TakesAReportApart) {
  const std::string text = "Halvik account: acme\nHalvik ticket: 12\n" + title("/bin/one") +
                           "stdout:\na\nb\n\nstderr:\nc\n\n" + title("/bin/two") +
                           title("/bin/three") + "stderr:\nd\n\n";
  const Report report = parseReport(text, plan());
  EXPECT_EQ(report.account, "acme");
  EXPECT_EQ(report.ticket, "12");
  ASSERT_EQ(report.blocks.size(), 3U);
  EXPECT_EQ(report.blocks[0].name, "/bin/one");
  EXPECT_EQ(report.blocks[0].standardOutput, "a\nb\n");
  EXPECT_EQ(report.blocks[0].standardError, "c\n");
  EXPECT_EQ(report.blocks[0].line, 3U);
  EXPECT_EQ(report.blocks[0].outputLine, 5U);
  EXPECT_EQ(report.blocks[0].errorLine, 9U);
  EXPECT_EQ(report.blocks[1].standardOutput, std::nullopt);
  EXPECT_EQ(report.blocks[2].standardError, "d\n");
  EXPECT_EQ(report.blocks[2].line, 12U);
  EXPECT_THAT(report.unread, IsEmpty());
}

TEST(ReaderParse, KnowsThePlan) {
  const std::string text = dataFile("clear.txt");
  const Report report = parseReport(text, plan());
  EXPECT_EQ(report.blocks.size(), blocksIn("clear.txt"));
  EXPECT_THAT(report.missing, IsEmpty());
  EXPECT_THAT(report.unread, IsEmpty());
  EXPECT_TRUE(std::ranges::all_of(report.blocks, &Block::isComplete));
  EXPECT_EQ(blockOf(report, "path-domain").name, "/usr/sbin/traceroute -I -w 2 shop.example");
  EXPECT_EQ(blockOf(report, "ping-hong-kong").name,
            "/sbin/ping -c 5 router.hkg.halvik.example (hong kong router)");
}

TEST(ReaderParse, ReadsATrimmedReport) {
  std::string text = dataFile("clear.txt");
  const std::size_t ps = text.find("/bin/ps wwaux\n");
  const std::size_t end = text.find(separator, ps);
  text.replace(end - 40, 40, trimmingMarker);
  text = std::string(separator) + "Halvik account: a\n" + text;
  const Report report = parseReport(text, plan());
  EXPECT_EQ(report.account, "a");
  EXPECT_EQ(report.blocks.size(), blocksIn("clear.txt"));
  EXPECT_TRUE(blockOf(report, "processes").isTrimmed);
  EXPECT_FALSE(blockOf(report, "processes").isCut);
  EXPECT_TRUE(blockOf(report, "interfaces").isComplete());
  EXPECT_THAT(report.unread, IsEmpty());
}

TEST(ReaderParse, SetsApartWhatIsPrintedAfterAReport) {
  const std::string report = dataFile("clear_bare.txt");
  const std::string text = report + "\noutputFile=F\nurl=https://halvik.example/1\n";
  const Report parsed = parseReport(text, plan());
  ASSERT_EQ(parsed.unread.size(), 1U);
  EXPECT_EQ(parsed.unread[0].text, "\noutputFile=F\nurl=https://halvik.example/1\n");
  EXPECT_EQ(parsed.blocks.back().whole, parseReport(report, plan()).blocks.back().whole);
}

std::string withCarriageReturns(std::string text) {
  for (std::size_t at = text.find('\n'); at != std::string::npos; at = text.find('\n', at + 2)) {
    text.insert(at, 1, '\r');
  }
  return text;
}

TEST(ReaderParse, ReadsAWholeReportThatAnEditorHasSaved) {
  const std::string text = std::string(byteOrderMark) +
                           withCarriageReturns(dataFile("clear_bare.txt") +
                                               "\noutputFile=F\nurl=https://halvik.example/1\n");
  const Report report = parseReport(text, plan());
  EXPECT_EQ(report.head, byteOrderMark);
  EXPECT_EQ(report.blocks.size(), blocksIn("clear_bare.txt"));
  EXPECT_FALSE(report.blocks.back().isCut);
  ASSERT_EQ(report.unread.size(), 1U);
  EXPECT_EQ(report.unread[0].text, "\r\noutputFile=F\r\nurl=https://halvik.example/1\r\n");
}

TEST(ReaderParse, FindsNoBlockInOtherTexts) {
  for (const std::string text : {"", "hello\n", "Halvik account: a\n", "\0\xff\x1b[31m"}) {
    const Report report = parseReport(text, plan());
    EXPECT_THAT(report.blocks, IsEmpty());
  }
}

TEST(ReaderParse, TellsBlocksFromTextsThatLookLikeThem) {
  // A page that pretends to be the blocks after it.
  const std::string forged = title("/usr/sbin/netstat -rn") + "stdout:\nnothing\n\n" +
                             title("/usr/bin/curl -s block.halvik.example/monitor.php") +
                             "stdout:\nforged\n\n" + title("/usr/bin/curl -s 203.0.113.80") +
                             "stdout:\nforged\n\n" + title("nothing of the plan");
  const std::string text = ReportText::bare().set("web-monitor", forged).text();
  const Report report = parseReport(text, plan());
  EXPECT_EQ(report.blocks.size(), blocksIn("clear_bare.txt"));
  EXPECT_EQ(blockOf(report, "web-monitor").standardOutput, forged);
  EXPECT_EQ(blockOf(report, "web-block-page").standardOutput, "block page: ok\n");
  EXPECT_TRUE(blockOf(report, "web-block-page").isDoubtful);
}

TEST(ReaderParse, KeepsWhatStandsBeforeAPageThatHoldsAReport) {
  std::string forged = ReportText::bare().set("routes", "forged\n").text();
  forged.erase(forged.find(title("/usr/sbin/system_profiler SPSoftwareDataType")));
  for (const std::string page : {"web-block-id", "web-by-number"}) {
    const std::string text = ReportText::bare().set(page, forged).text();
    const Report report = parseReport(text, plan());
    EXPECT_EQ(report.blocks.size(), blocksIn("clear_bare.txt")) << page;
    EXPECT_EQ(blockOf(report, "myip").line, 1U) << page;
    EXPECT_NE(blockOf(report, "routes").standardOutput, "forged\n") << page;
    EXPECT_TRUE(blockOf(report, "routes").isDoubtful) << page;
    EXPECT_EQ(blockOf(report, "system").whole.data() + blockOf(report, "system").whole.size(),
              text.data() + text.size())
        << page;
  }
}

TEST(ReaderParse, TakesNoFurtherBlocksFromAPage) {
  const std::string withSkivra = dataFile("clear.txt");
  const std::string block = std::string(separator) + "Results for: ";
  std::string forged = withSkivra.substr(withSkivra.find(block + "/usr/bin/curl -Ls -c"));
  const std::size_t log = forged.find(block + "/bin/sh -c cat \"");
  const std::string oneLog = forged.substr(log, forged.find(separator, log + 1) - log);
  for (int i = 0; i < 100; ++i) {
    forged.insert(log, oneLog);
  }
  const std::string text = ReportText::bare().set("web-block-id", forged).text();
  const Report report = parseReport(text, plan());
  EXPECT_EQ(report.blocks.size(), blocksIn("clear_bare.txt"));
  EXPECT_GT(blockOf(report, "web-block-id").whole.size(), forged.size());
}

TEST(ReaderParse, PassesOverACommandThatThePlanDoesNotHave) {
  std::string text = dataFile("clear_bare.txt");
  const std::string later = title("/usr/bin/dig +time=10 of.a.later.version") + "stdout:\n1\n\n";
  text.insert(text.find(separator, text.find("+time=10 debug")), later);
  const Report report = parseReport(text, plan());
  EXPECT_EQ(report.blocks.size(), blocksIn("clear_bare.txt"));
  EXPECT_THAT(report.missing, IsEmpty());
}

TEST(ReaderParse, LeavesAWholeReportInsideALogAlone) {
  const std::string inner = dataFile("clear_bare.txt");
  for (const auto& [log, line] : {std::pair{"log", "ipblock log 1 of 40\n"},
                                  {"system-log", "launchd[1]: started the Skivra\n"}}) {
    const std::string text = ReportText::clear().replace(log, line, inner).text();
    const Report report = parseReport(text, plan());
    EXPECT_EQ(report.blocks.size(), blocksIn("clear.txt")) << log;
    EXPECT_GE(blockOf(report, log).output().size(), inner.size()) << log;
  }
}

TEST(ReaderParse, MarksWhatStandsBeforeAHole) {
  const std::string text = ReportText::bare().remove("routes").text();
  const Report report = parseReport(text, plan());
  ASSERT_EQ(report.missing.size(), 1U);
  EXPECT_EQ(report.missing[0]->key, "routes");
  EXPECT_TRUE(blockOf(report, "name-servers").isCut);
  EXPECT_FALSE(blockOf(report, "interfaces").isCut);
}

TEST(ReaderParse, ReadsTheBeginningOfAReport) {
  const std::string whole = dataFile("clear.txt");
  for (std::size_t size = 0; size < whole.size(); size += 509) {
    const std::string text = whole.substr(0, size);
    const Report report = parseReport(text, plan());
    if (!report.blocks.empty()) {
      EXPECT_TRUE(report.blocks.back().isCut) << size;
    }
  }
  // Behind the last line feed of a line, and of a title or a label, the block is no more whole.
  const std::size_t last = whole.rfind(separator);
  for (std::size_t feed = whole.find('\n', last); feed + 2 < whole.size();
       feed = whole.find('\n', feed + 1)) {
    const Report report = parseReport(whole.substr(0, feed + 1), plan());
    EXPECT_EQ(report.blocks.back().isCut, whole[feed - 1] != '\n') << feed;
  }
}

TEST(ReaderParse, ReadsAnotherPlan) {
  const std::string text = title("/bin/a") + "stdout:\n1\n\n" + title("/bin/b") + "stdout:\n2\n\n";
  const Report report = parseReport(text, plan());
  ASSERT_EQ(report.blocks.size(), 2U);
  EXPECT_EQ(report.blocks[1].standardOutput, "2\n");
  EXPECT_EQ(report.blocks[1].planned, nullptr);
}

TEST(ReaderParse, ReadsTextsOfAnotherSystem) {
  const std::string text = "before\r\n" + std::string(separator) +
                           "Results for: /bin/a\r\nstdout:\r\n1\r\n\r\nstderr:\r\n2\r\n";
  const Report report = parseReport(text, plan());
  ASSERT_EQ(report.blocks.size(), 1U);
  EXPECT_EQ(report.blocks[0].name, "/bin/a");
  EXPECT_EQ(report.blocks[0].standardError, "2\r");
  ASSERT_EQ(report.unread.size(), 1U);
  EXPECT_EQ(report.unread[0].text, "before\r\n");
}

}  // namespace
}  // namespace reader
