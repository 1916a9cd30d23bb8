// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Texts of a report on a terminal. They may hold escape sequences, which must not reach it.

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace reader {

/// `text` without anything that a terminal or a reader of bidirectional text would obey: control
/// characters, and bytes that are no UTF-8, are U+FFFD; a tab is a blank. At most `charactersMax`
/// characters, the last of which is then an ellipsis.
std::string printable(std::string_view text, std::size_t charactersMax = std::string::npos);

/// The first character of `text`, with nothing for bytes that are no UTF-8, and how many bytes it
/// takes, at least one.
struct Character {
  char32_t code = 0;
  std::size_t size = 1;
  bool isValid = false;
};
Character firstCharacter(std::string_view text);

}  // namespace reader
