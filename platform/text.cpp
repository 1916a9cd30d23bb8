// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/text.h"

#include <QChar>
#include <QString>
#include <QStringDecoder>
#include <simdjson.h>

#include <algorithm>
#include <cstdint>

namespace platform {

namespace {

bool isContinuation(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

bool isLead(char byte) {
  return static_cast<unsigned char>(byte) >= 0xC0U;
}

// Two loops that are simple enough for the compiler to take sixteen bytes at a time: most blocks of
// a text are ASCII, and the units of the others are counted in one byte.
constexpr std::size_t asciiBlockBytes = 1024;
constexpr std::size_t countedBlockBytes = 64;

bool isAscii(std::string_view block) {
  unsigned char bits = 0;
  for (const char byte : block) {
    bits |= static_cast<unsigned char>(byte);
  }
  return bits < 0x80U;
}

std::uint8_t countUnits(std::string_view block) {
  std::uint8_t units = 0;
  for (const char byte : block) {
    // A character of four bytes takes two units, every other one takes one.
    const int ofByte =
        (isContinuation(byte) ? 0 : 1) + (static_cast<unsigned char>(byte) >= 0xF0U ? 1 : 0);
    units = static_cast<std::uint8_t>(units + ofByte);
  }
  return units;
}

std::size_t countUnitsInBlocks(std::string_view text) {
  std::size_t units = 0;
  for (std::size_t begin = 0; begin < text.size(); begin += countedBlockBytes) {
    units += countUnits(text.substr(begin, countedBlockBytes));
  }
  return units;
}

// Unlike the toolkit's usual way this keeps a byte order mark, which is a character like any other
// in what a command printed or a user typed.
QString decode(std::string_view text) {
  QStringDecoder decoder(QStringDecoder::Utf8,
                         QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
  return decoder(QByteArrayView(text.data(), static_cast<qsizetype>(text.size())));
}

bool isSpace(QChar character) {
  return character == u'\t' || character.category() == QChar::Separator_Space;
}

}  // namespace

bool isUtf8(std::string_view bytes) {
  // The toolkit's own check is a tenth as fast where a text is not all ASCII.
  return simdjson::validate_utf8(bytes.data(), bytes.size());
}

std::string toUtf8(std::string_view bytes) {
  return isUtf8(bytes) ? std::string(bytes) : decode(bytes).toStdString();
}

std::size_t utf16Length(std::string_view text) {
  std::size_t units = 0;
  for (std::size_t begin = 0; begin < text.size(); begin += asciiBlockBytes) {
    const std::string_view block = text.substr(begin, asciiBlockBytes);
    units += isAscii(block) ? block.size() : countUnitsInBlocks(block);
  }
  return units;
}

bool isInsideCharacter(std::string_view text, std::size_t position) {
  return position < text.size() && isContinuation(text[position]);
}

void Utf8Progress::advance(std::string_view text) {
  // The last character may be incomplete: it is looked at with what comes next. It has three bytes
  // behind its first.
  std::size_t end = text.size();
  for (int i = 0; i < 3 && end > checked && isContinuation(text[end - 1]); ++i) {
    --end;
  }
  if (end > checked && isLead(text[end - 1])) {
    --end;
  }
  check(text, end);
}

bool Utf8Progress::finish(std::string_view text) {
  check(text, text.size());
  return isValid;
}

void Utf8Progress::check(std::string_view text, std::size_t end) {
  isValid = isValid && isUtf8(text.substr(checked, end - checked));
  checked = end;
}

std::string_view untilNul(std::string_view text) {
  return text.substr(0, text.find('\0'));
}

Pieces untilNul(const Pieces& pieces) {
  Pieces shortened;
  shortened.reserve(pieces.size());
  for (const std::string_view piece : pieces) {
    shortened.push_back(untilNul(piece));
    if (shortened.back().size() < piece.size()) {
      break;
    }
  }
  return shortened;
}

std::string join(const Pieces& pieces) {
  std::size_t size = 0;
  for (const std::string_view piece : pieces) {
    size += piece.size();
  }
  std::string joined;
  joined.reserve(size);
  for (const std::string_view piece : pieces) {
    joined += piece;
  }
  return joined;
}

std::string trimSpaces(std::string_view text) {
  const QString all = decode(text);
  const auto* const first = std::find_if_not(all.begin(), all.end(), isSpace);
  const auto last = std::find_if_not(all.rbegin(), std::make_reverse_iterator(first), isSpace);
  return QString(first, static_cast<qsizetype>(last.base() - first)).toStdString();
}

}  // namespace platform
