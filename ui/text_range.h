// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// A place in a text, as rich text is measured.

#pragma once

#include <cstddef>

namespace ui {

/// A run of text in UTF-16 code units.
struct TextRange {
  std::size_t position;
  std::size_t length;
  bool operator==(const TextRange&) const = default;
};

}  // namespace ui
