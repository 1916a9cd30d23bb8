// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Lines and words of a text, as views into it.

#pragma once

#include <cstddef>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace reader {

/// A line without its end, and its number in the whole report, from 1.
struct Line {
  std::string_view text{};
  std::size_t number = 0;
};

/// The lines of `text`, numbered from `first`; what follows the last line feed is one if it is not
/// empty. A carriage return before a line feed belongs to the end of the line.
std::vector<Line> linesOf(std::string_view text, std::size_t first);

/// What stands between blanks and tabs.
std::vector<std::string_view> wordsOf(std::string_view text);

/// Without white space at both ends.
std::string_view trimmed(std::string_view text);

/// What follows `prefix`, if `text` begins with it.
std::optional<std::string_view> after(std::string_view text, std::string_view prefix);

/// What stands between the first `begin` and the next `end` after it.
std::optional<std::string_view> between(std::string_view text, std::string_view begin,
                                        std::string_view end);

bool contains(std::string_view text, std::string_view part);

/// Whether `text` contains one of `parts`.
bool containsAny(std::string_view text, std::initializer_list<std::string_view> parts);

/// ASCII letters in lower case.
std::string lowered(std::string_view text);

/// The number with which `text` begins, and nothing if it begins with none.
std::optional<double> leadingNumber(std::string_view text);

/// `text` as a number that is not negative, and nothing if there is anything else in it.
std::optional<int> wholeNumber(std::string_view text);

/// The number of line feeds in `text`.
std::size_t lineFeeds(std::string_view text);

}  // namespace reader
