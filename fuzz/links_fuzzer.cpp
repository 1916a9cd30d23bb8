// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Input: a text in UTF-8; a byte that is none counts as a unit by itself. Properties: the links are
// those that the rules, followed one unit at a time, find; they are in order, begin with their
// prefix, hold white space at the end only, and share units only with a link of the same end.

#include <string>
#include <vector>

#include "fuzz/support.h"
#include "ui/links.h"

namespace {

using Units = std::u16string;
using ui::TextRange;

bool isContinuation(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

// As UTF-8, but surrogates and overlong forms pass as well: the text of a window may hold any unit.
Units toUnits(std::string_view bytes) {
  Units units;
  for (std::size_t i = 0; i < bytes.size();) {
    const auto first = static_cast<unsigned char>(bytes[i]);
    const std::size_t more = first < 0xC0 ? 0 : first < 0xE0 ? 1 : first < 0xF0 ? 2 : 3;
    std::size_t present = 0;
    while (present < more && i + present + 1 < bytes.size() &&
           isContinuation(bytes[i + present + 1])) {
      ++present;
    }
    char32_t value = first;
    if (more > 0 && present == more) {
      value = first & (0x3FU >> more);
      for (std::size_t j = 1; j <= more; ++j) {
        value = value * 64 + (static_cast<unsigned char>(bytes[i + j]) & 0x3FU);
      }
      i += more;
    }
    ++i;
    if (value > 0xFFFF) {
      units += static_cast<char16_t>(0xD800 + ((value - 0x10000) / 0x400) % 0x400);
      units += static_cast<char16_t>(0xDC00 + value % 0x400);
    } else {
      units += static_cast<char16_t>(value);
    }
  }
  return units;
}

bool isWhite(char16_t unit) {
  const bool isControl = (unit >= 9 && unit <= 13) || unit == 0x85;
  const bool isSpace = unit == 0x20 || unit == 0xA0 || unit == 0x1680 ||
                       (unit >= 0x2000 && unit <= 0x200A) || unit == 0x202F || unit == 0x205F ||
                       unit == 0x3000;
  const bool isLineOrParagraph = unit == 0x2028 || unit == 0x2029;
  return isControl || isSpace || isLineOrParagraph;
}

bool isAt(const Units& text, std::size_t position, const Units& word) {
  for (std::size_t i = 0; i < word.size(); ++i) {
    if (position + i >= text.size() || text[position + i] != word[i]) {
      return false;
    }
  }
  return true;
}

// The length of the text when the word is not there.
std::size_t search(const Units& text, std::size_t start, const Units& word) {
  while (start < text.size() && !isAt(text, start, word)) {
    ++start;
  }
  return start;
}

std::vector<TextRange> findSlowly(const Units& text) {
  std::vector<TextRange> links;
  for (std::size_t start = 0;;) {
    const std::size_t secure = search(text, start, u"https://");
    const std::size_t plain = search(text, start, u"http://");
    const bool isSecure = secure < text.size();
    const std::size_t position = isSecure ? secure : plain;
    if (position == text.size()) {
      return links;
    }
    start = position + (isSecure ? 8 : 7);
    std::size_t end = start;
    while (end < text.size() && !isWhite(text[end])) {
      ++end;
    }
    links.push_back({.position = position,
                     .length = end < text.size() ? end - position + 1 : text.size() - position});
  }
}

void checkRange(const Units& text, const TextRange& link) {
  fuzz::check(link.position < text.size(), "a link begins within the text");
  fuzz::check(link.length <= text.size() - link.position, "a link ends within the text");
  fuzz::check(isAt(text, link.position, u"http://") || isAt(text, link.position, u"https://"),
              "a link begins with its prefix");
  for (std::size_t i = 0; i + 1 < link.length; ++i) {
    fuzz::check(!isWhite(text[link.position + i]), "white space ends a link");
  }
  const std::size_t end = link.position + link.length;
  fuzz::check(end == text.size() || isWhite(text[end - 1]), "only white space ends a link");
}

void checkOrder(const TextRange& former, const TextRange& latter) {
  const std::size_t formerEnd = former.position + former.length;
  fuzz::check(former.position < latter.position, "links are in the order of the text");
  fuzz::check(latter.position >= formerEnd || latter.position + latter.length == formerEnd,
              "links lie apart, or the latter is the end of the former");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Units text = toUnits(fuzz::asText(data, size));
  const std::vector<TextRange> links = ui::findLinks(text);
  for (std::size_t i = 0; i < links.size(); ++i) {
    checkRange(text, links[i]);
    if (i > 0) {
      checkOrder(links[i - 1], links[i]);
    }
  }
  fuzz::check(links == findSlowly(text), "the links are those of the rules");
  return 0;
}
