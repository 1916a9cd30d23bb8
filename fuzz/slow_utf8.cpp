// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "fuzz/slow_utf8.h"

namespace fuzz {

namespace {

// The least character that needs so many bytes; a smaller one is an overlong form.
constexpr char32_t least[] = {0, 0, 0x80, 0x800, 0x10000};

// The character at the beginning, with its bytes removed; nothing when there is no whole one.
std::optional<char32_t> takeCharacter(std::string_view& bytes) {
  const auto first = static_cast<unsigned char>(bytes[0]);
  std::size_t size = 0;
  char32_t character = 0;
  if (first <= 0x7F) {
    size = 1;
    character = first;
  } else if (first >= 0xC0 && first <= 0xDF) {
    size = 2;
    character = first - 0xC0U;
  } else if (first >= 0xE0 && first <= 0xEF) {
    size = 3;
    character = first - 0xE0U;
  } else if (first >= 0xF0 && first <= 0xF7) {
    size = 4;
    character = first - 0xF0U;
  } else {
    return std::nullopt;
  }
  if (bytes.size() < size) {
    return std::nullopt;
  }
  for (std::size_t i = 1; i < size; ++i) {
    const auto byte = static_cast<unsigned char>(bytes[i]);
    if (byte < 0x80 || byte > 0xBF) {
      return std::nullopt;
    }
    character = character * 64 + (byte - 0x80U);
  }
  const bool isSurrogate = character >= 0xD800 && character <= 0xDFFF;
  if (character < least[size] || isSurrogate || character > 0x10FFFF) {
    return std::nullopt;
  }
  bytes.remove_prefix(size);
  return character;
}

}  // namespace

std::optional<std::u32string> decode(std::string_view bytes) {
  std::u32string characters;
  while (!bytes.empty()) {
    const std::optional<char32_t> character = takeCharacter(bytes);
    if (!character) {
      return std::nullopt;
    }
    characters += *character;
  }
  return characters;
}

std::u32string decodeWhatIsWhole(std::string_view bytes) {
  std::u32string characters;
  while (!bytes.empty()) {
    if (const std::optional<char32_t> character = takeCharacter(bytes)) {
      characters += *character;
    } else {
      bytes.remove_prefix(1);
    }
  }
  return characters;
}

std::string encode(std::u32string_view characters) {
  std::string bytes;
  const auto add = [&bytes](char32_t byte) { bytes += static_cast<char>(byte); };
  for (const char32_t character : characters) {
    if (character < 0x80) {
      add(character);
    } else if (character < 0x800) {
      add(0xC0 + character / 64);
      add(0x80 + character % 64);
    } else if (character < 0x10000) {
      add(0xE0 + character / 4096);
      add(0x80 + character / 64 % 64);
      add(0x80 + character % 64);
    } else {
      add(0xF0 + character / 262144);
      add(0x80 + character / 4096 % 64);
      add(0x80 + character / 64 % 64);
      add(0x80 + character % 64);
    }
  }
  return bytes;
}

}  // namespace fuzz
