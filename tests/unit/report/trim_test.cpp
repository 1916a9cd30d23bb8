// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "report/trim.h"

#include <gtest/gtest.h>

#include <limits>
#include <optional>
#include <stdexcept>
#include <vector>

namespace report {
namespace {

constexpr std::int32_t sizeMax = 1'000'000;
const std::string marker = "<This log has been trimmed>";
const std::string sep(45, '-');

std::string fill(std::size_t size, const std::string& start = "") {
  return start + std::string(size - start.size(), 'x');
}

// The rule once more, by another way than the program's: sections are lists of characters, each
// with its UTF-8 bytes and its UTF-16 length, split with a character-wise scan.
std::string referenceTrim(const std::string& body, std::size_t limit) {
  const std::size_t excess = body.size() - limit;
  std::vector<std::string> sections(1);
  for (std::size_t i = 0; i < body.size();) {
    if (body.compare(i, sep.size(), sep) == 0) {
      sections.emplace_back();
      i += sep.size();
    } else {
      sections.back() += body[i++];
    }
  }
  std::string result;
  for (const std::string& section : sections) {
    if (section.empty()) {
      continue;
    }
    std::size_t units = 0;
    for (std::size_t i = 0; i < section.size();) {
      const auto lead = static_cast<unsigned char>(section[i]);
      const std::size_t bytes = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
      units += bytes == 4 ? 2 : 1;
      i += bytes;
    }
    result += sep;
    const bool hasTail = section.find("tail") != std::string::npos;
    if (hasTail && units > 27 + excess) {
      result += section.substr(0, units - 27 - excess) + marker;
    } else {
      result += section;
    }
  }
  return result;
}

TEST(Trim, MakesNothingOfABodyThatFits) {
  EXPECT_EQ(trimTailData("", sizeMax), "");
  EXPECT_EQ(trimTailData("tail", 4), "");
  EXPECT_EQ(trimTailData(fill(1'000'000, "tail"), sizeMax), "");
}

TEST(Trim, CountsTheExcessInThirtyTwoBits) {
  constexpr std::int32_t least = std::numeric_limits<std::int32_t>::min();
  // The largest excess that there is: no section is long enough to lose that much.
  EXPECT_EQ(trimTailData("tail", least + 5), sep + "tail");
  // One more is none at all.
  EXPECT_EQ(trimTailData("tail", least + 4), "");
  EXPECT_EQ(trimTailData("", least), "");
}

TEST(Trim, OneByteTooManyCostsTwentyEight) {
  const std::string body = sep + fill(1'000'001 - 45, "tail");
  ASSERT_EQ(body.size(), 1'000'001U);
  EXPECT_EQ(trimTailData(body, sizeMax), body.substr(0, 1'000'001 - 28) + marker);
}

// Each case is written out by hand for a limit of 100 bytes. The hyphens of a row are counted, not
// copied.
TEST(Trim, CutsTheSectionsWithTail) {
  struct Case {
    const char* name;
    std::string body;
    std::string expected;
  };
  const std::string x60(60, 'x');
  const std::string y60(60, 'y');
  const std::vector<Case> cases{
      {"no tail: nothing is cut", sep + x60, sep + x60},
      {"no tail, in another case", sep + "TAIL Tail t-ail" + x60, sep + "TAIL Tail t-ail" + x60},
      {"one section", sep + "tail" + x60, sep + "tail" + x60.substr(0, 60 - 27 - 9) + marker},
      {"tail at the end of the section", sep + x60 + "tail",
       sep + x60.substr(0, 64 - 27 - 9) + marker},
      {"tail inside a word", sep + "details" + x60,
       sep + "details" + x60.substr(0, 67 - 27 - 12 - 7) + marker},
      {"only the section with tail", sep + x60 + sep + "tail" + y60 + sep + "end",
       // 45 + 60 + 45 + 64 + 45 + 3 = 262, 162 too many: too short to be cut
       sep + x60 + sep + "tail" + y60 + sep + "end"},
      {"two sections lose the excess each",
       sep + "tail" + std::string(300, 'a') + sep + "tail" + std::string(300, 'b'),
       // 45 + 304 + 45 + 304 = 698, 598 too many: neither is long enough
       sep + "tail" + std::string(300, 'a') + sep + "tail" + std::string(300, 'b')},
      {"head gets a separator", "Halvik account: a\n" + sep + "tail" + x60,
       // 18 + 45 + 64 = 127, 27 too many: keep 64 - 54 = 10
       sep + "Halvik account: a\n" + sep + "tailxxxxxx" + marker},
      {"head with tail is cut as well", "Halvik account: tail" + x60 + "\n" + sep + "b",
       // 81 + 45 + 1 = 127, 27 too many: keep 81 - 54 = 27
       sep + "Halvik account: tailxxxxxxx" + marker + sep + "b"},
      {"just long enough", sep + "tail" + std::string(25, 'x') + sep,
       // 45 + 29 + 45 = 119, 19 too many: 29 - 46 < 1
       sep + "tail" + std::string(25, 'x')},
  };
  for (const Case& one : cases) {
    EXPECT_EQ(trimTailData(one.body, 100), one.expected) << one.name;
  }
}

TEST(Trim, CutsASectionOfJustEnoughLength) {
  // With one byte of excess a section needs 29 units to keep one of them.
  const std::string enough = fill(29, "tail");
  const std::string tooShort = fill(28, "tail");
  const std::string other = sep + fill(1000);
  const auto limitFor = [&](const std::string& body) {
    return static_cast<std::int32_t>(body.size() - 1);
  };
  const std::string cut = sep + enough + other;
  EXPECT_EQ(trimTailData(cut, limitFor(cut)), sep + "t" + marker + other);
  const std::string kept = sep + tooShort + other;
  EXPECT_EQ(trimTailData(kept, limitFor(kept)), kept);
}

TEST(Trim, TwoSectionsLoseTheWholeExcessEach) {
  const std::string a = fill(200, "tail");
  const std::string b = fill(300, "the tail");
  const std::string body = sep + a + sep + b;
  // 590 bytes, 10 too many, 37 from each.
  EXPECT_EQ(trimTailData(body, 580),
            sep + a.substr(0, 163) + marker + sep + b.substr(0, 263) + marker);
}

TEST(Trim, RunsOfHyphensAreSeparatorsFromLeftToRight) {
  const std::string rest = fill(100);
  const std::vector<std::pair<std::size_t, std::string>> cases{
      {44, "a" + std::string(44, '-') + "b"},
      {45, "a" + sep + "b"},
      {46, "a" + sep + "-b"},
      {50, "a" + sep + std::string(5, '-') + "b"},
      {89, "a" + sep + std::string(44, '-') + "b"},
      // Two separators leave an empty section between them, which is dropped with one of them.
      {90, "a" + sep + "b"},
      {91, "a" + sep + "-b"},
      {135, "a" + sep + "b"},
  };
  for (const auto& [count, middle] : cases) {
    const std::string body = sep + "a" + std::string(count, '-') + "b" + sep + rest;
    EXPECT_EQ(trimTailData(body, 10), sep + middle + sep + rest) << count << " hyphens";
  }
}

TEST(Trim, DropsEmptySectionsAtBothEnds) {
  const std::string rest = fill(100);
  EXPECT_EQ(trimTailData(sep + sep + rest + sep + sep, 10), sep + rest);
  EXPECT_EQ(trimTailData(sep, 10), "");
}

TEST(Trim, MeasuresInUnitsAndCutsAtBytes) {
  // 10 characters of two bytes behind the cut: 20 bytes count as 10 units.
  const std::string twoBytes = "\xC3\xA9";
  std::string section = fill(100, "tail");
  for (int i = 0; i < 10; ++i) {
    section += twoBytes;
  }
  std::string body = sep + section;
  // 110 units, 5 too many bytes: keep 78 bytes, all of them ASCII.
  EXPECT_EQ(trimTailData(body, static_cast<std::int32_t>(body.size()) - 5),
            sep + section.substr(0, 78) + marker);

  // A character of four bytes counts as two units.
  section = fill(100, "tail") + "\xF0\x9F\x98\x80";
  body = sep + section;
  EXPECT_EQ(trimTailData(body, static_cast<std::int32_t>(body.size()) - 5),
            sep + section.substr(0, 102 - 32) + marker);
}

TEST(Trim, ACutInsideACharacterIsAnError) {
  std::string section = "tail";
  for (int i = 0; i < 100; ++i) {
    section += "\xC3\xA9";
  }
  const std::string body = sep + section;
  const auto size = static_cast<std::int32_t>(body.size());
  // 104 units: the cuts fall at byte 74, between two characters, and at byte 73, inside one.
  EXPECT_EQ(trimTailData(body, size - 3), sep + section.substr(0, 74) + marker);
  EXPECT_THROW(trimTailData(body, size - 4), std::runtime_error);
}

TEST(Trim, AgreesWithTheRuleAppliedCharacterByCharacter) {
  // Buffers that meet in every order: hyphens below and above a separator, "tail" whole and split,
  // characters of all lengths.
  const std::vector<std::string> pieces{
      std::string(44, '-'), std::string(50, '-'), sep, "tail", "ta", "il\n", fill(70), "\xC3\xA9",
      "\xE2\x82\xAC",       "\xF0\x9F\x98\x80",   "\n"};
  std::uint32_t state = 1;
  int cut = 0;
  for (std::size_t round = 0; round < 3000; ++round) {
    std::string body;
    for (int i = 0; i < 14; ++i) {
      state = state * 1664525U + 1013904223U;
      body += pieces[(state >> 16U) % pieces.size()];
    }
    const std::size_t limit = body.size() - 1 - round % 7;
    std::optional<std::string> trimmed;
    try {
      trimmed = trimTailData(body, static_cast<std::int32_t>(limit));
    } catch (const std::runtime_error&) {
      continue;
    }
    ASSERT_EQ(*trimmed, referenceTrim(body, limit)) << body;
    cut += trimmed->find(marker) == std::string::npos ? 0 : 1;
  }
  EXPECT_GT(cut, 300);
}

TEST(Trim, FindsTheWordAnywhereInASection) {
  const std::string section(1200, 't');
  for (std::size_t at = 0; at + 4 <= section.size(); ++at) {
    std::string mentioning = section;
    mentioning.replace(at, 4, "tail");
    const auto limit = static_cast<std::int32_t>(sep.size() + section.size()) - 1;
    EXPECT_EQ(trimTailData(sep + mentioning, limit), sep + mentioning.substr(0, 1172) + marker)
        << at;
    for (const char* other : {"tai ", "toil"}) {
      std::string almost = section;
      almost.replace(at, 4, other);
      EXPECT_EQ(trimTailData(sep + almost, limit), sep + almost) << at;
    }
  }
}

TEST(Trim, TakesNoOtherWordForIt) {
  for (const char* almost : {"Tail", "tAil", "taIl", "taiL"}) {
    const std::string body = sep + fill(200) + almost + fill(200);
    EXPECT_EQ(trimTailData(body, static_cast<std::int32_t>(body.size()) - 1), body) << almost;
  }
}

TEST(Trim, AManyFoldExcessIsAsLinearAsASmallOne) {
  std::string body;
  for (int i = 0; i < 100'000; ++i) {
    body += sep + "section " + std::to_string(i);
  }
  EXPECT_EQ(trimTailData(body, 1), body);
}

}  // namespace
}  // namespace report
