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

std::string_view untilNul(std::string_view text) {
  return text.substr(0, text.find('\0'));
}

std::string trimSpaces(std::string_view text) {
  const QString all = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
  const auto* const first = std::find_if_not(all.begin(), all.end(), isSpace);
  const auto last = std::find_if_not(all.rbegin(), std::make_reverse_iterator(first), isSpace);
  return QString(first, static_cast<qsizetype>(last.base() - first)).toStdString();
}

}  // namespace platform
