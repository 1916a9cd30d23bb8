// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "ui/links.h"

#include <QChar>

#include <algorithm>

namespace ui {

namespace {

constexpr std::u16string_view secure = u"https://";
constexpr std::u16string_view plain = u"http://";

bool isWhiteSpaceOrNewline(char16_t unit) {
  return QChar(unit).isSpace();
}

TextRange linkFrom(std::u16string_view text, std::size_t position, std::size_t prefixEnd) {
  const auto* const end = std::find_if(text.begin() + static_cast<std::ptrdiff_t>(prefixEnd),
                                       text.end(), isWhiteSpaceOrNewline);
  const auto space = static_cast<std::size_t>(end - text.begin());
  // The white space belongs to the link when there is one.
  return {.position = position, .length = std::min(space + 1, text.size()) - position};
}

}  // namespace

std::vector<TextRange> findLinks(std::u16string_view text) {
  std::vector<TextRange> links;
  std::size_t start = 0;
  while (true) {
    std::u16string_view prefix = secure;
    std::size_t position = text.find(secure, start);
    if (position == std::u16string_view::npos) {
      prefix = plain;
      position = text.find(plain, start);
    }
    if (position == std::u16string_view::npos) {
      return links;
    }
    // The next search begins behind the prefix, not behind the link: an address may hold another
    // one.
    start = position + prefix.size();
    links.push_back(linkFrom(text, position, start));
  }
}

}  // namespace ui
