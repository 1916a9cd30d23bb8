// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "report/report.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace report {
namespace {

const std::string hyphens(45, '-');

std::string textOf(const std::optional<std::string>& account,
                   const std::optional<std::string>& ticket, std::span<const ResultBlock> blocks) {
  return text::join(Report(account, ticket, blocks).buffers());
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
    EXPECT_EQ(formatBlock(block), hyphens + text);
  }
}

TEST(Report, JoinsHeadAndBlocksInOrder) {
  const std::vector<ResultBlock> blocks{{"first", "1\n", std::nullopt}, {"second", "", "2\n"}};
  const std::string body = hyphens + "Results for: first\nstdout:\n1\n\n" + hyphens +
                           "Results for: second\nstderr:\n2\n\n";
  EXPECT_EQ(textOf(std::nullopt, std::nullopt, blocks), body);
  EXPECT_EQ(textOf("acme-office", std::nullopt, blocks), "Halvik account: acme-office\n" + body);
  EXPECT_EQ(textOf(std::nullopt, "12345", blocks), "Halvik ticket: 12345\n" + body);
  EXPECT_EQ(textOf("acme-office", "12345", blocks),
            "Halvik account: acme-office\nHalvik ticket: 12345\n" + body);
  EXPECT_EQ(textOf(std::nullopt, std::nullopt, {}), "");
}

TEST(Report, IsEmptyWithoutAHeadAndBlocks) {
  EXPECT_TRUE(Report(std::nullopt, std::nullopt, {}).empty());
}

TEST(Report, KeepsEveryByteOfAText) {
  const std::string text("a\0b\xC3\xA9", 5);
  const std::vector<ResultBlock> blocks{{"cmd", text, std::nullopt}};
  EXPECT_EQ(textOf(std::nullopt, std::nullopt, blocks),
            hyphens + "Results for: cmd\nstdout:\n" + text + '\n');
}

TEST(Report, LeavesWhatWasPrintedWhereItIs) {
  const std::string text(1'000'000, 'x');
  const std::vector<ResultBlock> blocks{{"cmd", text, std::nullopt}};
  const Report whole(std::nullopt, std::nullopt, blocks);
  EXPECT_EQ(std::count_if(whole.buffers().begin(), whole.buffers().end(),
                          [&](std::string_view piece) { return piece.data() == text.data(); }),
            1);
}

TEST(Report, ACopyOutlivesTheOriginal) {
  Report copy;
  EXPECT_TRUE(copy.empty());
  {
    const Report original("an account", "a ticket", {});
    copy = original;
  }
  EXPECT_FALSE(copy.empty());
  EXPECT_EQ(text::join(copy.buffers()), "Halvik account: an account\nHalvik ticket: a ticket\n");
}

}  // namespace
}  // namespace report
