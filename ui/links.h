// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Finding web addresses in a text.

#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace ui {

/// A place in a text, in UTF-16 code units.
struct TextRange {
  std::size_t position;
  std::size_t length;
  bool operator==(const TextRange&) const = default;
};

/// The ranges of `text` that are shown as links, in the order of the search: each begins with
/// "http://" or "https://" and ends with the white-space character behind it. An "http://" address
/// before an "https://" one is passed over, and an address inside another one is a link of its own.
std::vector<TextRange> findLinks(std::u16string_view text);

}  // namespace ui
