// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "ui/links.h"

#include <gtest/gtest.h>

#include "support/white_space.h"

namespace ui {

static void PrintTo(const TextRange& range, std::ostream* out) {
  *out << '(' << range.position << ", " << range.length << ')';
}

namespace {

TEST(Links, AreFoundByTheSearchRule) {
  const std::vector<std::pair<std::u16string, std::vector<TextRange>>> cases{
      {u"", {}},
      {u"no address here", {}},
      {u"http:/ https:/ HTTP://A HTTPS://B", {}},
      // To the end of the text.
      {u"See results at https://r.example/1", {{15, 19}}},
      // With the one white space behind it.
      {u"go http://a/1 now", {{3, 11}}},
      {u"go http://a/1\nnow", {{3, 11}}},
      {u"go http://a/1\u2003now", {{3, 11}}},
      {u"http://", {{0, 7}}},
      {u"https:// ", {{0, 9}}},
      // An address before a secure one is passed over.
      {u"x http://a/1 y https://b/2", {{15, 11}}},
      {u"https://b/2 http://a/1", {{0, 12}, {12, 10}}},
      {u"http://a http://b", {{0, 9}, {9, 8}}},
      // An address inside another one is a link of its own.
      {u"https://a/?u=http://b end", {{0, 22}, {13, 9}}},
      {u"https://a/?u=https://b end", {{0, 23}, {13, 10}}},
      {u"http://http://b", {{0, 15}, {7, 8}}},
      // Measured in UTF-16 units.
      {u"\U0001F600 http://a", {{3, 8}}},
  };
  for (const auto& [text, links] : cases) {
    EXPECT_EQ(findLinks(text), links) << std::string(text.begin(), text.end());
  }
}

TEST(Links, EndBehindTheFirstWhiteSpaceOfAnyKind) {
  for (const support::WhiteSpace& space : support::whiteSpaces) {
    const std::u16string text = u"x http://a" + std::u16string(2, space.unit) + u"b";
    EXPECT_EQ(findLinks(text), (std::vector<TextRange>{{2, 9}})) << std::hex << +space.unit;
  }
}

TEST(Links, GoOnAcrossEverythingElse) {
  for (const support::Character& character : support::noWhiteSpaces) {
    const std::u16string text = u"x http://a" + std::u16string(1, character.unit) + u"b c";
    EXPECT_EQ(findLinks(text), (std::vector<TextRange>{{2, 11}})) << std::hex << +character.unit;
  }
}

}  // namespace
}  // namespace ui
