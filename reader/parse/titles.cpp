// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "reader/parse/titles.h"

#include <algorithm>
#include <string>

namespace reader {

namespace {

constexpr std::string_view label = "Results for: ";

// What a command printed before the separator in the same line makes it a part of its output.
bool mayBeginAt(std::string_view text, std::size_t offset) {
  const std::string_view before = text.substr(0, offset);
  return before.empty() || before.ends_with('\n') || before.ends_with(trimmingMarker) ||
         before == byteOrderMark;
}

Title titleAt(std::string_view text, std::size_t offset) {
  const std::size_t nameBegin = offset + separator.size() + label.size();
  const std::size_t end = std::min(text.find('\n', nameBegin), text.size());
  std::string_view name = text.substr(nameBegin, end - nameBegin);
  if (name.ends_with('\r')) {
    name.remove_suffix(1);
  }
  return {.offset = offset, .size = std::min(end + 1, text.size()) - offset, .name = name};
}

/// How often the label stands in a text.
std::size_t countLabels(std::string_view text) {
  std::size_t count = 0;
  for (std::size_t at = text.find(label); at != std::string_view::npos;
       at = text.find(label, at + label.size())) {
    ++count;
  }
  return count;
}

}  // namespace

std::vector<Title> findTitles(std::string_view text) {
  std::vector<Title> titles;
  // There may be millions, and a vector that grows is in memory twice.
  titles.reserve(countLabels(text));
  // The label is what is looked for: texts have long rows of hyphens more often.
  std::size_t at = text.find(label);
  while (at != std::string_view::npos) {
    const std::size_t offset = at - std::min(at, separator.size());
    if (text.substr(offset, at - offset) == separator && mayBeginAt(text, offset)) {
      titles.push_back(titleAt(text, offset));
      at = text.find(label, offset + titles.back().size);
    } else {
      at = text.find(label, at + label.size());
    }
  }
  return titles;
}

}  // namespace reader
