// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "reader/parse/lines.h"

#include <algorithm>
#include <charconv>

namespace reader {

namespace {

constexpr std::string_view whiteSpace = " \t\r\n\f\v";

}  // namespace

std::vector<Line> linesOf(std::string_view text, std::size_t first) {
  std::vector<Line> lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    if (line.ends_with('\r')) {
      line.remove_suffix(1);
    }
    lines.push_back({.text = line, .number = first++});
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return lines;
}

std::vector<std::string_view> wordsOf(std::string_view text) {
  std::vector<std::string_view> words;
  while (true) {
    text.remove_prefix(std::min(text.find_first_not_of(whiteSpace), text.size()));
    if (text.empty()) {
      return words;
    }
    const std::size_t end = std::min(text.find_first_of(whiteSpace), text.size());
    words.push_back(text.substr(0, end));
    text.remove_prefix(end);
  }
}

std::string_view trimmed(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(whiteSpace);
  if (begin == std::string_view::npos) {
    return {};
  }
  return text.substr(begin, text.find_last_not_of(whiteSpace) - begin + 1);
}

std::optional<std::string_view> after(std::string_view text, std::string_view prefix) {
  return text.starts_with(prefix) ? std::optional(text.substr(prefix.size())) : std::nullopt;
}

std::optional<std::string_view> between(std::string_view text, std::string_view begin,
                                        std::string_view end) {
  const std::size_t from = text.find(begin);
  if (from == std::string_view::npos) {
    return std::nullopt;
  }
  text.remove_prefix(from + begin.size());
  const std::size_t to = text.find(end);
  return to == std::string_view::npos ? std::nullopt : std::optional(text.substr(0, to));
}

bool contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

bool containsAny(std::string_view text, std::initializer_list<std::string_view> parts) {
  return std::ranges::any_of(parts, [&](std::string_view part) { return contains(text, part); });
}

std::string lowered(std::string_view text) {
  std::string lower(text);
  std::ranges::transform(lower, lower.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return lower;
}

std::optional<double> leadingNumber(std::string_view text) {
  // Not from_chars alone: it would read "inf" and "nan".
  if (text.empty() || !(text[0] == '.' || (text[0] >= '0' && text[0] <= '9'))) {
    return std::nullopt;
  }
  double number = 0;
  const auto [end, error] =
      std::from_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
  return error == std::errc() ? std::optional(number) : std::nullopt;
}

std::optional<int> wholeNumber(std::string_view text) {
  if (text.empty() || text[0] < '0' || text[0] > '9') {
    return std::nullopt;
  }
  int number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size() ? std::optional(number)
                                                                  : std::nullopt;
}

std::size_t lineFeeds(std::string_view text) {
  return static_cast<std::size_t>(std::ranges::count(text, '\n'));
}

}  // namespace reader
