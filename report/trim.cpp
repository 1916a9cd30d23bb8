// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "report/trim.h"

#include <stdexcept>

#include "report/report.h"
#include "text/utf8.h"

namespace report {

namespace {

// Written so that the compiler compares many places at a time, by two letters that few other words
// have: a report is mostly sections in which the word never comes.
bool holdsTail(std::string_view section) {
  constexpr std::size_t blockBytes = 512;
  constexpr std::string_view word = "tail";
  while (section.size() >= blockBytes + word.size()) {
    std::uint8_t found = 0;
    for (std::size_t i = 0; i < blockBytes; ++i) {
      const char* at = section.data() + i;
      const unsigned equal = (at[0] == 't' ? 1U : 0U) & (at[3] == 'l' ? 1U : 0U);
      found = static_cast<std::uint8_t>(found | equal);
    }
    if (found != 0 &&
        section.substr(0, blockBytes + word.size()).find(word) != std::string_view::npos) {
      return true;
    }
    section.remove_prefix(blockBytes);
  }
  return section.find(word) != std::string_view::npos;
}

// What stays of a section that loses `lost` units; nothing when it is to stay whole.
std::string_view cutBeginning(std::string_view section, std::int64_t lost) {
  // A text has no more units than bytes, so that most sections need not be looked through.
  if (static_cast<std::int64_t>(section.size()) <= lost || !holdsTail(section)) {
    return {};
  }
  const std::int64_t keep = static_cast<std::int64_t>(text::utf16Length(section)) - lost;
  if (keep < 1) {
    return {};
  }
  if (text::isInsideCharacter(section, static_cast<std::size_t>(keep))) {
    throw std::runtime_error(
        "the report cannot be trimmed for the upload: the cut falls inside a character");
  }
  return section.substr(0, static_cast<std::size_t>(keep));
}

void appendTrimmed(std::string& trimmed, std::string_view section, std::int32_t excess) {
  const std::int64_t lost = static_cast<std::int64_t>(trimMarker.size()) + excess;
  const std::string_view beginning = cutBeginning(section, lost);
  trimmed += beginning.empty() ? section : beginning;
  trimmed += beginning.empty() ? "" : trimMarker;
}

}  // namespace

std::string trimTailData(std::string_view body, std::int32_t sizeMax) {
  std::string trimmed;
  // 32 bits as in the size limit itself: nothing is made of a body that is two gigabytes over it.
  const auto excess = static_cast<std::int32_t>(static_cast<std::int64_t>(body.size()) - sizeMax);
  if (excess <= 0) {
    return trimmed;
  }
  trimmed.reserve(body.size() + separator.size());
  for (bool isLast = false; !isLast;) {
    const std::size_t end = body.find(separator);
    isLast = end == std::string_view::npos;
    const std::string_view section = body.substr(0, end);
    if (!section.empty()) {
      trimmed += separator;
      appendTrimmed(trimmed, section, excess);
    }
    body.remove_prefix(isLast ? body.size() : end + separator.size());
  }
  return trimmed;
}

}  // namespace report
