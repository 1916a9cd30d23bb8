// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "text/utf8.h"

#include <gtest/gtest.h>

#include <vector>

namespace text {
namespace {

TEST(Text, KnowsValidUtf8) {
  const std::vector<std::string> valid{"",
                                       "ascii\n",
                                       std::string("a\0b", 3),
                                       "caf\xC3\xA9",
                                       "\xE2\x82\xAC",
                                       "\xF0\x9F\x98\x80",
                                       "\xEF\xBB\xBF"
                                       "mark",
                                       "\xEF\xBF\xBF",
                                       "\xF4\x8F\xBF\xBF"};
  for (const std::string& text : valid) {
    EXPECT_TRUE(isUtf8(text)) << text;
    EXPECT_EQ(toUtf8(text), text);
  }
}

TEST(Text, KnowsInvalidUtf8) {
  const std::vector<std::string> invalid{"\xFF",
                                         "\x80",
                                         "caf\xC3",
                                         "\xC3(",
                                         "\xC0\xAF",
                                         "\xED\xA0\x80",
                                         "\xE2\x82",
                                         "\xF0\x9F\x98",
                                         "\xF4\x90\x80\x80",
                                         "\xF8\x88\x80\x80\x80",
                                         "ok so far, then \xFE and on",
                                         std::string(100, 'x') + '\xC3'};
  for (const std::string& bytes : invalid) {
    EXPECT_FALSE(isUtf8(bytes)) << bytes;
    EXPECT_TRUE(isUtf8(toUtf8(bytes))) << bytes;
  }
  EXPECT_EQ(toUtf8("a\xFF b"), "a\xEF\xBF\xBD b");
  EXPECT_EQ(toUtf8("\xFF\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"),
            "\xEF\xBF\xBD\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
  // A byte order mark is a character like any other.
  EXPECT_EQ(toUtf8("\xEF\xBB\xBF\xFF"), "\xEF\xBB\xBF\xEF\xBF\xBD");
}

TEST(Text, IsUtf8WhereverACharacterStands) {
  const std::vector<std::string> wrong{"\x80",         "\xC1\xBF",         "\xC3",
                                       "\xE0\x9F\xBF", "\xED\xA0\x80",     "\xE2\x82",
                                       "\xF0\x9F\x98", "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80",
                                       "\xF5",         "\xC3\xA9\xA9",     "\xF0\x9F\x98\x80\x80"};
  for (const std::string beside : {"x", "\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80"}) {
    std::string start;
    for (std::size_t count = 0; count < 140; ++count, start += beside) {
      EXPECT_TRUE(isUtf8(start)) << start;
      EXPECT_TRUE(isUtf8(start + "x" + start)) << start;
      for (const std::string& bytes : wrong) {
        std::string text = start;
        text += bytes;
        EXPECT_FALSE(isUtf8(text)) << text;
        text += start;
        EXPECT_FALSE(isUtf8(text)) << text;
      }
    }
  }
}

TEST(Text, MeasuresInUtf16Units) {
  EXPECT_EQ(utf16Length(""), 0U);
  EXPECT_EQ(utf16Length("abc"), 3U);
  EXPECT_EQ(utf16Length("caf\xC3\xA9"), 4U);
  EXPECT_EQ(utf16Length("\xE2\x82\xAC"), 1U);
  EXPECT_EQ(utf16Length("\xF0\x9F\x98\x80!"), 3U);
}

TEST(Text, MeasuresLongTextsInUtf16Units) {
  // Characters that stand across every boundary within, one kind beside another.
  const std::vector<std::pair<std::string, std::size_t>> kinds{
      {"a", 1}, {"\xC3\xA9", 1}, {"\xE2\x82\xAC", 1}, {"\xF0\x9F\x98\x80", 2}};
  for (const auto& [first, firstUnits] : kinds) {
    for (const auto& [second, secondUnits] : kinds) {
      for (std::size_t count = 0; count < 1100; count += count < 130 ? 1 : 97) {
        std::string text;
        for (std::size_t i = 0; i < count; ++i) {
          text += first;
        }
        text += second;
        for (std::size_t i = 0; i < count; ++i) {
          text += first;
        }
        ASSERT_EQ(utf16Length(text), 2 * count * firstUnits + secondUnits)
            << first << second << count;
      }
    }
  }
}

TEST(Text, FindsCutsInsideCharacters) {
  const std::string text = "a\xC3\xA9\xF0\x9F\x98\x80";
  const std::vector<bool> inside{false, false, true, false, true, true, true, false};
  for (std::size_t i = 0; i < inside.size(); ++i) {
    EXPECT_EQ(isInsideCharacter(text, i), inside[i]) << i;
  }
}

TEST(Text, IsJoinedFromBuffers) {
  EXPECT_EQ(join({}), "");
  EXPECT_EQ(join({"a", "", "bc"}), "abc");
}

TEST(Text, InBuffersEndsAtTheFirstNul) {
  const std::string_view withNul("b\0c", 3);
  const std::string_view onlyNul("\0", 1);
  EXPECT_EQ(join(untilNul(Buffers{"a", withNul, "d", withNul})), "ab");
  EXPECT_EQ(join(untilNul(Buffers{"a", "d"})), "ad");
  EXPECT_EQ(join(untilNul(Buffers{onlyNul, "d"})), "");
  EXPECT_EQ(join({"a", withNul, "d", withNul}, Until::firstNul), "ab");
  EXPECT_EQ(join({"a", "d"}, Until::firstNul), "ad");
  EXPECT_EQ(join({onlyNul, "d"}, Until::firstNul), "");
  EXPECT_EQ(join({"a", onlyNul}), std::string("a\0", 2));
}

TEST(Text, EndsAtTheFirstNul) {
  EXPECT_EQ(untilNul("abc"), "abc");
  EXPECT_EQ(untilNul(std::string("a\0b\0", 4)), "a");
  EXPECT_EQ(untilNul(std::string(1, '\0')), "");
}

TEST(Text, TrimsSpacesAndTabsButNoLineBreaks) {
  EXPECT_EQ(trimSpaces("  acme  "), "acme");
  EXPECT_EQ(trimSpaces("\t a b\t"), "a b");
  EXPECT_EQ(trimSpaces("\xC2\xA0\xE1\x9A\x80\xE2\x80\x83 x \xE2\x80\xAF\xE2\x81\x9F\xE3\x80\x80"),
            "x");
  EXPECT_EQ(trimSpaces(" \t "), "");
  EXPECT_EQ(trimSpaces(""), "");
  EXPECT_EQ(trimSpaces(" \nx\r\n "), "\nx\r\n");
  // Not of the category of spaces, invisible as it is.
  EXPECT_EQ(trimSpaces("\xE2\x80\x8B"), "\xE2\x80\x8B");
  EXPECT_EQ(trimSpaces("\xEF\xBB\xBF x "), "\xEF\xBB\xBF x");
}

}  // namespace
}  // namespace text
