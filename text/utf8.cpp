// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "text/utf8.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace text {

namespace {

bool isContinuation(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

// The tab and the spaces of Unicode.
constexpr std::array<std::string_view, 18> trimmed{
    "\t",     " ",      "\u00A0", "\u1680", "\u2000", "\u2001", "\u2002", "\u2003", "\u2004",
    "\u2005", "\u2006", "\u2007", "\u2008", "\u2009", "\u200A", "\u202F", "\u205F", "\u3000"};

// Written so that the compiler looks at many bytes at a time.
bool isAscii(std::string_view bytes) {
  std::uint8_t seen = 0;
  for (const char byte : bytes) {
    seen = static_cast<std::uint8_t>(seen | static_cast<std::uint8_t>(byte));
  }
  return seen < 0x80;
}

// The length of the character that `bytes` begin with; 0 when there is no valid one.
std::size_t characterLength(std::string_view bytes) {
  const auto at = [bytes](std::size_t index) {
    return index < bytes.size() ? static_cast<unsigned char>(bytes[index]) : 0U;
  };
  const auto continues = [&](std::size_t index) { return (at(index) & 0xC0U) == 0x80U; };
  const unsigned first = at(0);
  const unsigned second = at(1);
  if (first < 0x80) {
    return 1;
  }
  if (first < 0xE0) {
    return first >= 0xC2 && continues(1) ? 2 : 0;
  }
  const bool isOverlong = (first == 0xE0 && second < 0xA0) || (first == 0xF0 && second < 0x90);
  const bool isSurrogate = first == 0xED && second > 0x9F;
  const bool isTooLarge = first > 0xF4 || (first == 0xF4 && second > 0x8F);
  if (isOverlong || isSurrogate || isTooLarge || !continues(1) || !continues(2)) {
    return 0;
  }
  return first < 0xF0 ? 3 : continues(3) ? 4 : 0;
}

}  // namespace

bool isUtf8(std::string_view bytes) {
  constexpr std::size_t blockBytes = 64;
  while (!bytes.empty()) {
    const bool isBlock = bytes.size() >= blockBytes && isAscii(bytes.substr(0, blockBytes));
    const std::size_t valid = isBlock ? blockBytes : characterLength(bytes);
    if (valid == 0) {
      return false;
    }
    bytes.remove_prefix(valid);
  }
  return true;
}

std::string toUtf8(std::string_view bytes) {
  constexpr std::string_view replacement = "\xEF\xBF\xBD";
  std::string text;
  while (!bytes.empty()) {
    const std::size_t valid = characterLength(bytes);
    text += valid > 0 ? bytes.substr(0, valid) : replacement;
    bytes.remove_prefix(std::max<std::size_t>(valid, 1));
  }
  return text;
}

std::size_t utf16Length(std::string_view text) {
  constexpr std::size_t blockBytes = 256;
  std::size_t units = 0;
  for (std::size_t begin = 0; begin < text.size(); begin += blockBytes) {
    const std::string_view block = text.substr(begin, blockBytes);
    if (isAscii(block)) {
      units += block.size();
      continue;
    }
    for (const char byte : block) {
      // A character takes one unit, and a second one if it has four bytes.
      units += isContinuation(byte) ? 0 : static_cast<unsigned char>(byte) >= 0xF0U ? 2 : 1;
    }
  }
  return units;
}

bool isInsideCharacter(std::string_view text, std::size_t position) {
  return position < text.size() && isContinuation(text[position]);
}

std::string_view untilNul(std::string_view text) {
  return text.substr(0, text.find('\0'));
}

Buffers untilNul(const Buffers& buffers) {
  Buffers shortened;
  for (const std::string_view buffer : buffers) {
    shortened.push_back(untilNul(buffer));
    if (shortened.back().size() < buffer.size()) {
      break;
    }
  }
  return shortened;
}

std::string join(const Buffers& buffers, Until limit) {
  std::size_t bytes = 0;
  for (const std::string_view buffer : buffers) {
    bytes += buffer.size();
  }
  std::string joined;
  joined.reserve(bytes);
  for (const std::string_view buffer : buffers) {
    // Searched just before it is copied, while it is in the processor's cache.
    const std::string_view text = limit == Until::firstNul ? untilNul(buffer) : buffer;
    joined += text;
    if (text.size() < buffer.size()) {
      break;
    }
  }
  return joined;
}

std::string trimSpaces(std::string_view text) {
  const auto isAtStart = [&](std::string_view space) { return text.starts_with(space); };
  const auto isAtEnd = [&](std::string_view space) { return text.ends_with(space); };
  const auto find = [](auto matches) {
    return std::find_if(trimmed.begin(), trimmed.end(), matches);
  };
  for (const auto* space = find(isAtStart); space != trimmed.end(); space = find(isAtStart)) {
    text.remove_prefix(space->size());
  }
  for (const auto* space = find(isAtEnd); space != trimmed.end(); space = find(isAtEnd)) {
    text.remove_suffix(space->size());
  }
  return std::string(text);
}

}  // namespace text
