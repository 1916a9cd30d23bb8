// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Input: two bytes for how much a report is too large, and the report, to be unfolded.
// Property: it is cut as the rules, followed character by character, cut it, and a cut inside a
// character is the one error.

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "fuzz/slow_utf8.h"
#include "fuzz/support.h"
#include "report/trim.h"

namespace {

using Characters = std::u32string;

const Characters separator(45, U'-');

bool isAt(const Characters& text, std::size_t position, const Characters& word) {
  for (std::size_t i = 0; i < word.size(); ++i) {
    if (position + i >= text.size() || text[position + i] != word[i]) {
      return false;
    }
  }
  return true;
}

bool holds(const Characters& text, const Characters& word) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (isAt(text, i, word)) {
      return true;
    }
  }
  return false;
}

std::vector<Characters> split(const Characters& text) {
  std::vector<Characters> sections(1);
  for (std::size_t i = 0; i < text.size();) {
    if (isAt(text, i, separator)) {
      sections.emplace_back();
      i += separator.size();
    } else {
      sections.back() += text[i++];
    }
  }
  return sections;
}

long utf16Units(const Characters& text) {
  long units = 0;
  for (const char32_t character : text) {
    units += character > 0xFFFF ? 2 : 1;
  }
  return units;
}

// Nothing when a cut falls inside a character.
std::optional<std::string> trimSlowly(const Characters& body, long excess) {
  std::string output;
  if (excess <= 0) {
    return output;
  }
  for (const Characters& section : split(body)) {
    if (section.empty()) {
      continue;
    }
    output += std::string(45, '-');
    const std::string bytes = fuzz::encode(section);
    const long keep = utf16Units(section) - (27 + excess);
    if (holds(section, U"tail") && keep >= 1) {
      const std::string kept = bytes.substr(0, static_cast<std::size_t>(keep));
      if (!fuzz::decode(kept)) {
        return std::nullopt;
      }
      output += kept + "<This log has been trimmed>";
    } else {
      output += bytes;
    }
  }
  return output;
}

std::optional<std::string> trim(std::string_view body, std::int32_t sizeMax) {
  try {
    return report::trimTailData(body, sizeMax);
  } catch (const std::runtime_error&) {
    return std::nullopt;
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) {
    return 0;
  }
  // From 1000 bytes less than allowed to 64,535 bytes more.
  const int excess = data[0] + 256 * data[1] - 1000;
  const fuzz::ExactCopy body(fuzz::unfold(fuzz::asText(data, size).substr(2)));
  const auto characters = fuzz::decode(body.view());
  if (!characters) {
    return 0;
  }
  const int sizeMax = static_cast<int>(body.view().size()) - excess;
  fuzz::check(trim(body.view(), sizeMax) == trimSlowly(*characters, excess),
              "a report is cut by the rules");
  return 0;
}
