// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// A network in order gives nothing to find.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "reader/output/reading.h"
#include "report_text.h"

namespace reader {
namespace {

using testing::IsEmpty;

TEST(ReaderRules, FindNothingInClearReports) {
  EXPECT_THAT(found(dataFile("clear.txt")), IsEmpty());
  EXPECT_THAT(found(dataFile("clear_bare.txt")), IsEmpty());
  EXPECT_THAT(found(dataFile("macos.txt")), IsEmpty());
}

TEST(ReaderRules, ConcludeNothingFromAReportThatBreaksOff) {
  const std::string whole = dataFile("clear.txt");
  for (std::size_t size = 1; size < whole.size(); size += 397) {
    EXPECT_THAT(found(whole.substr(0, size)), IsEmpty()) << size;
  }
}

TEST(ReaderRules, ConcludeNothingFromAMissingBlock) {
  const std::string text = dataFile("clear.txt");
  const ReportReading reading = readReport("test", text);
  for (const Block& block : reading.report.blocks) {
    std::string without = text;
    without.erase(static_cast<std::size_t>(block.whole.data() - text.data()), block.whole.size());
    EXPECT_THAT(found(without), IsEmpty()) << block.name;
  }
}

TEST(ReaderRules, HaveNamesOfTheirOwn) {
  std::set<std::string_view> ids;
  for (const Rule& rule : allRules()) {
    EXPECT_TRUE(ids.insert(rule.id).second) << rule.id;
  }
  for (const Rule& rule : allRules()) {
    for (const std::string_view id : rule.explains) {
      EXPECT_TRUE(ids.contains(id)) << rule.id << " explains " << id;
    }
  }
}

TEST(ReaderRules, HaveRanksOfTheirOwnWithRoomBetweenThem) {
  int before = 0;
  for (const Rule& rule : allRules()) {
    EXPECT_GT(rule.rank, before) << rule.id;
    EXPECT_EQ(rule.rank % 5, 0) << rule.id;
    before = rule.rank;
  }
}

}  // namespace
}  // namespace reader
