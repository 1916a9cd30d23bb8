// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Where a report may have its blocks: every line that looks like the beginning of one.

#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace reader {

/// Opens every block.
inline constexpr std::string_view separator = "---------------------------------------------";

/// Stands at the end of a block that was shortened before it was sent, directly before the next
/// separator.
inline constexpr std::string_view trimmingMarker = "<This log has been trimmed>";

/// Some editors put it before what they save.
inline constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

/// A line that looks like the beginning of a block.
struct Title {
  std::size_t offset = 0;
  /// With the separator and the line feed.
  std::size_t size = 0;
  std::string_view name{};
};

/// All of them, in order.
std::vector<Title> findTitles(std::string_view text);

}  // namespace reader
