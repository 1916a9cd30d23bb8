// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// UTF-8 text in std::string: validation, conversion, lengths.

#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace text {

/// A text as views of buffers that others own.
using Buffers = std::vector<std::string_view>;

enum class Until { end, firstNul };

/// The buffers as one text, all of it or up to, not including, its first NUL byte.
std::string join(const Buffers& buffers, Until limit = Until::end);

/// Whether `bytes` are valid UTF-8. NUL and non-characters are valid; surrogates and overlong forms
/// are not.
bool isUtf8(std::string_view bytes);

/// `bytes` with every one that belongs to no valid character replaced by U+FFFD.
std::string toUtf8(std::string_view bytes);

/// The length of valid UTF-8 `text` in UTF-16 code units.
std::size_t utf16Length(std::string_view text);

/// Whether a cut before byte `position` of valid UTF-8 `text` falls inside a character. `position`
/// may be the length.
bool isInsideCharacter(std::string_view text, std::size_t position);

/// `text` up to, not including, its first NUL byte.
std::string_view untilNul(std::string_view text);
Buffers untilNul(const Buffers& buffers);

/// Valid UTF-8 `text` without the tabs and the spaces of Unicode (category Zs) at both ends; line
/// breaks stay.
std::string trimSpaces(std::string_view text);

}  // namespace text
