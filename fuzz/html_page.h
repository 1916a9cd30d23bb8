// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// A page as a browser takes it apart.

#pragma once

#include <string>
#include <string_view>

namespace fuzz {

struct HtmlPage {
  /// All elements with their attributes, texts and comments, but for the text of the element with
  /// the id "data".
  std::string structure{};
  /// That text.
  std::string data{};
  /// Mistakes in the markup that a browser would pass over.
  unsigned errors = 0;
};

HtmlPage parseHtml(std::string_view text);

}  // namespace fuzz
