// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "text/utf8.h"

#include <simdjson.h>

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

// The length that the first byte of a character promises, and 1 for any other byte.
std::size_t promisedLength(char first) {
  const auto byte = static_cast<unsigned char>(first);
  return byte < 0xC0U ? 1 : byte < 0xE0U ? 2 : byte < 0xF0U ? 3 : 4;
}

}  // namespace

bool isUtf8(std::string_view bytes) {
  // The usual checks are a tenth as fast where a text is not all ASCII.
  return simdjson::validate_utf8(bytes.data(), bytes.size());
}

std::string toUtf8(std::string_view bytes) {
  if (isUtf8(bytes)) {
    return std::string(bytes);
  }
  constexpr std::string_view replacement = "\xEF\xBF\xBD";
  std::string text;
  while (!bytes.empty()) {
    const std::string_view character = bytes.substr(0, promisedLength(bytes.front()));
    const bool isWhole = isUtf8(character);
    text += isWhole ? character : replacement;
    bytes.remove_prefix(isWhole ? character.size() : 1);
  }
  return text;
}

std::size_t utf16Length(std::string_view text) {
  // In blocks whose count fits into a byte, so that the compiler counts sixteen bytes at a time.
  constexpr std::size_t blockBytes = 64;
  std::size_t units = 0;
  for (std::size_t begin = 0; begin < text.size(); begin += blockBytes) {
    std::uint8_t inBlock = 0;
    for (const char byte : text.substr(begin, blockBytes)) {
      // A character takes one unit, and a second one if it has four bytes.
      const int ofByte =
          (isContinuation(byte) ? 0 : 1) + (static_cast<unsigned char>(byte) >= 0xF0U ? 1 : 0);
      inBlock = static_cast<std::uint8_t>(inBlock + ofByte);
    }
    units += inBlock;
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
  shortened.reserve(buffers.size());
  for (const std::string_view piece : buffers) {
    shortened.push_back(untilNul(piece));
    if (shortened.back().size() < piece.size()) {
      break;
    }
  }
  return shortened;
}

std::string join(const Buffers& buffers) {
  std::size_t size = 0;
  for (const std::string_view piece : buffers) {
    size += piece.size();
  }
  std::string joined;
  joined.reserve(size);
  for (const std::string_view piece : buffers) {
    joined += piece;
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
