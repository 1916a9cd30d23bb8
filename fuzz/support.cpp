// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "fuzz/support.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace fuzz {

namespace {

std::size_t characterBytes(char first) {
  const auto byte = static_cast<unsigned char>(first);
  return byte < 0xC0U ? 1 : byte < 0xE0U ? 2 : byte < 0xF0U ? 3 : 4;
}

}  // namespace

void check(bool holds, const char* property) {
  if (!holds) {
    std::fprintf(stderr, "does not hold: %s\n", property);
    std::abort();
  }
}

std::string_view Fields::next() {
  const std::size_t end = std::min(rest.find(separator), rest.size());
  const std::string_view field = rest.substr(0, end);
  ended = end == rest.size();
  rest.remove_prefix(std::min(end + 1, rest.size()));
  return field;
}

std::string unfold(std::string_view input, std::size_t bytesMax) {
  std::string text;
  while (!input.empty() && text.size() < bytesMax) {
    std::size_t copies = 1;
    if (input[0] == '\1' && input.size() > 2) {
      copies = static_cast<unsigned char>(input[1]);
      input.remove_prefix(2);
    }
    const std::string_view character = input.substr(0, characterBytes(input[0]));
    for (std::size_t i = 0; i < copies; ++i) {
      text += character;
    }
    input.remove_prefix(character.size());
  }
  return text;
}

ExactCopy::ExactCopy(std::string_view text)
    : bytes(std::make_unique<char[]>(text.size())), size(text.size()) {
  std::copy(text.begin(), text.end(), bytes.get());
}

}  // namespace fuzz
