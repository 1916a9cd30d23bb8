// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "report/report.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace report {
namespace {

const std::string hyphens(45, '-');

std::string textOf(const std::vector<ResultBlock>& blocks) {
  text::Buffers report;
  for (const ResultBlock& block : blocks) {
    addBlock(report, block);
  }
  return text::join(report);
}

TEST(Report, TheSeparatorIsFortyFiveHyphens) {
  EXPECT_EQ(separator, hyphens);
}

TEST(Report, ABlockHoldsWhatWasPrinted) {
  const std::vector<std::pair<ResultBlock, std::string>> cases{
      {{"cmd", std::nullopt, std::nullopt}, "Results for: cmd\n"},
      {{"cmd", "", ""}, "Results for: cmd\n"},
      {{"cmd", "out", std::nullopt}, "Results for: cmd\nstdout:\nout\n"},
      {{"cmd", "out\n", ""}, "Results for: cmd\nstdout:\nout\n\n"},
      {{"cmd", std::nullopt, "err\n"}, "Results for: cmd\nstderr:\nerr\n\n"},
      {{"cmd", "out\n", "err"}, "Results for: cmd\nstdout:\nout\n\nstderr:\nerr\n"},
  };
  for (const auto& [block, text] : cases) {
    EXPECT_EQ(textOf({block}), hyphens + text);
  }
}

TEST(Report, HoldsItsBlocksInOrder) {
  EXPECT_EQ(textOf({{"first", "1\n", std::nullopt}, {"second", "", "2\n"}}),
            hyphens + "Results for: first\nstdout:\n1\n\n" + hyphens +
                "Results for: second\nstderr:\n2\n\n");
}

TEST(Report, BeginsWithAccountAndTicket) {
  EXPECT_EQ(headOf(std::nullopt, std::nullopt), "");
  EXPECT_EQ(headOf("acme-office", std::nullopt), "Halvik account: acme-office\n");
  EXPECT_EQ(headOf(std::nullopt, "12345"), "Halvik ticket: 12345\n");
  EXPECT_EQ(headOf("acme-office", "12345"), "Halvik account: acme-office\nHalvik ticket: 12345\n");
}

TEST(Report, KeepsEveryByteOfAText) {
  const std::string text("a\0b\xC3\xA9", 5);
  EXPECT_EQ(textOf({{"cmd", text, std::nullopt}}),
            hyphens + "Results for: cmd\nstdout:\n" + text + '\n');
}

TEST(Report, LeavesWhatWasPrintedWhereItIs) {
  const std::string text(1'000'000, 'x');
  text::Buffers report;
  addBlock(report, {"cmd", text, std::nullopt});
  EXPECT_EQ(std::count_if(report.begin(), report.end(),
                          [&](std::string_view piece) { return piece.data() == text.data(); }),
            1);
}

}  // namespace
}  // namespace report
