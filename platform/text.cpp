// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/text.h"

#include <QChar>
#include <QString>
#include <QUtf8StringView>

#include <algorithm>

namespace platform {

namespace {

bool isContinuation(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

bool isLead(char byte) {
  return static_cast<unsigned char>(byte) >= 0xC0U;
}

bool isSpace(QChar character) {
  return character == u'\t' || character.category() == QChar::Separator_Space;
}

}  // namespace

bool isUtf8(std::string_view bytes) {
  return QUtf8StringView(bytes.data(), static_cast<qsizetype>(bytes.size())).isValidUtf8();
}

std::string toUtf8(std::string_view bytes) {
  return isUtf8(bytes)
             ? std::string(bytes)
             : QString::fromUtf8(bytes.data(), static_cast<qsizetype>(bytes.size())).toStdString();
}

std::size_t utf16Length(std::string_view text) {
  std::size_t units = 0;
  for (const char byte : text) {
    // A character of four bytes takes two units, every other one takes one.
    units += isContinuation(byte) ? 0U : 1U;
    units += static_cast<unsigned char>(byte) >= 0xF0U ? 1U : 0U;
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
  const QString all = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
  const auto* const first = std::find_if_not(all.begin(), all.end(), isSpace);
  const auto last = std::find_if_not(all.rbegin(), std::make_reverse_iterator(first), isSpace);
  return QString(first, static_cast<qsizetype>(last.base() - first)).toStdString();
}

}  // namespace platform
