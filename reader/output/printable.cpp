// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "reader/output/printable.h"

namespace reader {

namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";
constexpr std::string_view ellipsis = "\xE2\x80\xA6";

bool isHarmless(char32_t code) {
  const bool isControl = code < 0x20 || (code >= 0x7F && code < 0xA0);
  const bool isDirection = code == 0x061C || code == 0x200E || code == 0x200F ||
                           (code >= 0x2028 && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
  return !isControl && !isDirection && code != 0xFEFF;
}

std::size_t sizeByFirstByte(unsigned char byte) {
  if (byte < 0x80) {
    return 1;
  }
  if (byte >= 0xC2 && byte < 0xE0) {
    return 2;
  }
  if (byte >= 0xE0 && byte < 0xF0) {
    return 3;
  }
  return byte >= 0xF0 && byte < 0xF5 ? 4 : 0;
}

bool isShortest(char32_t code, std::size_t size) {
  constexpr char32_t first[] = {0, 0, 0x80, 0x800, 0x10000};
  return code >= first[size] && code <= 0x10FFFF && !(code >= 0xD800 && code < 0xE000);
}

}  // namespace

Character firstCharacter(std::string_view text) {
  const auto byteAt = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const std::size_t size = text.empty() ? 0 : sizeByFirstByte(byteAt(0));
  if (size == 0 || size > text.size()) {
    return {};
  }
  constexpr unsigned char masks[] = {0, 0x7F, 0x1F, 0x0F, 0x07};
  char32_t code = byteAt(0) & masks[size];
  for (std::size_t i = 1; i < size; ++i) {
    if ((byteAt(i) & 0xC0U) != 0x80) {
      return {};
    }
    code = (code << 6U) | (byteAt(i) & 0x3FU);
  }
  return isShortest(code, size) ? Character{.code = code, .size = size, .isValid = true}
                                : Character{};
}

std::string printable(std::string_view text, std::size_t charactersMax) {
  std::string shown;
  std::size_t count = 0;
  while (!text.empty()) {
    const Character character = firstCharacter(text);
    if (++count >= charactersMax && text.size() > character.size) {
      return shown.append(ellipsis);
    }
    if (character.isValid && character.code == '\t') {
      shown += ' ';
    } else if (character.isValid && isHarmless(character.code)) {
      shown += text.substr(0, character.size);
    } else {
      shown += replacement;
    }
    text.remove_prefix(character.size);
  }
  return shown;
}

}  // namespace reader
