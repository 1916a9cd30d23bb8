// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "ui/links.h"

#include <algorithm>

namespace ui {

namespace {

constexpr std::u16string_view secure = u"https://";
constexpr std::u16string_view plain = u"http://";

// Of ASCII and of Unicode, with its separators of lines and paragraphs.
constexpr std::u16string_view whiteSpaceAndNewlines =
    u" \t\n\v\f\r\u0085\u00A0\u1680\u2000\u2001\u2002\u2003\u2004\u2005\u2006\u2007\u2008"
    u"\u2009\u200A\u2028\u2029\u202F\u205F\u3000";

}  // namespace

std::vector<TextRange> findLinks(std::u16string_view text) {
  constexpr std::size_t nowhere = std::u16string_view::npos;
  std::vector<TextRange> links;
  std::size_t start = 0;
  std::size_t space = 0;
  // What was not found, or lies ahead, is not searched again: there may be many addresses.
  bool isSecureAhead = true;
  while (true) {
    std::size_t position = isSecureAhead ? text.find(secure, start) : nowhere;
    isSecureAhead = position != nowhere;
    const std::u16string_view prefix = isSecureAhead ? secure : plain;
    if (!isSecureAhead) {
      position = text.find(plain, start);
    }
    if (position == nowhere) {
      return links;
    }
    // The next search begins behind the prefix, not behind the link: an address may hold another
    // one.
    start = position + prefix.size();
    if (space < start) {
      space = std::min(text.find_first_of(whiteSpaceAndNewlines, start), text.size());
    }
    // The white space belongs to the link when there is one.
    links.push_back({.position = position, .length = std::min(space + 1, text.size()) - position});
  }
}

}  // namespace ui
