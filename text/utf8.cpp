// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "text/utf8.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

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

// Vectors of GCC and clang, which they have for every processor. Checks that take one byte after
// the other are a tenth as fast where a text is not all ASCII. What handles vectors is inlined,
// because the caller decides which instructions it may use.
using Vector = std::int8_t __attribute__((vector_size(16)));
using LongVector = std::int8_t __attribute__((vector_size(32)));

// So many bytes before another one decide whether it may stand there.
constexpr std::size_t before = 3;

// The bytes less 0x80, as processors compare signed numbers only.
template <typename V>
[[gnu::always_inline]] inline void load(const char* bytes, V& loaded) {
  std::memcpy(&loaded, bytes, sizeof loaded);
  loaded ^= static_cast<std::int8_t>(-0x80);
}

// Marks the bytes that may not follow the three before each of them. A character that lacks its end
// shows in the byte that follows.
template <typename V>
[[gnu::always_inline]] inline void markWrong(const char* threeBefore, V& wrong) {
  V third;
  V second;
  V last;
  V byte;
  load(threeBefore, third);
  load(threeBefore + 1, second);
  load(threeBefore + 2, last);
  load(threeBefore + 3, byte);
  const V isFirst = byte > 0x3F;  // 0xC0 less 0x80, and so on
  const V continues = (byte > -1) ^ isFirst;
  const V mustContinue = (last > 0x3F) | (second > 0x5F) | (third > 0x6F);
  const V isUnused = (isFirst ^ (byte > 0x41)) | (byte > 0x74);
  const V isOverlong = ((last == 0x60) & (byte < 0x20)) | ((last == 0x70) & (byte < 0x10));
  const V isSurrogate = (last == 0x6D) & (byte > 0x1F);
  const V isTooLarge = (last == 0x74) & (byte > 0x0F);
  wrong |= (continues ^ mustContinue) | isUnused | isOverlong | isSurrogate | isTooLarge;
}

template <typename V>
[[gnu::always_inline]] inline bool checkWith(std::string_view bytes) {
  V wrong{};
  std::size_t checked = 0;
  // The first bytes have none before them, and are checked in a copy that has.
  std::array<char, before + sizeof(V)> copy{};
  if (bytes.size() >= sizeof(V)) {
    std::copy_n(bytes.begin(), sizeof(V), copy.begin() + before);
    markWrong(copy.data(), wrong);
    checked = sizeof(V);
  }
  for (; checked > 0 && checked + sizeof(V) <= bytes.size(); checked += sizeof(V)) {
    markWrong(bytes.data() + checked - before, wrong);
  }
  // So are the last ones. Where the NULs begin, a character must have ended.
  copy.fill('\0');
  const std::size_t seen = std::min(checked, before);
  std::copy(bytes.begin() + static_cast<std::ptrdiff_t>(checked - seen), bytes.end(),
            copy.begin() + static_cast<std::ptrdiff_t>(before - seen));
  markWrong(copy.data(), wrong);
  std::array<char, sizeof(V)> marks{};
  std::memcpy(marks.data(), &wrong, sizeof wrong);
  return marks == std::array<char, sizeof(V)>{};
}

#ifdef __x86_64__
[[gnu::target("avx2")]] bool checkWithAvx2(std::string_view bytes) {
  return checkWith<LongVector>(bytes);
}
#endif

}  // namespace

bool isUtf8(std::string_view bytes) {
#ifdef __x86_64__
  if (static_cast<bool>(__builtin_cpu_supports("avx2"))) {
    return checkWithAvx2(bytes);
  }
#endif
  return checkWith<Vector>(bytes);
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
