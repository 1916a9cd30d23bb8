// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Input: a text, to be unfolded. Property: what the program knows about the text is what a decoder
// knows that looks at one byte after the other.

#include <algorithm>
#include <string>
#include <vector>

#include "fuzz/slow_utf8.h"
#include "fuzz/support.h"
#include "text/utf8.h"

namespace {

constexpr char32_t replacement = 0xFFFD;

std::u32string withoutReplacements(std::u32string characters) {
  characters.erase(std::remove(characters.begin(), characters.end(), replacement),
                   characters.end());
  return characters;
}

void checkMended(std::string_view bytes) {
  const std::string mended = text::toUtf8(bytes);
  const auto characters = fuzz::decode(mended);
  fuzz::check(characters.has_value(), "what was made text is text");
  fuzz::check(characters->find(replacement) != std::u32string::npos, "what was replaced shows");
  fuzz::check(
      withoutReplacements(*characters) == withoutReplacements(fuzz::decodeWhatIsWhole(bytes)),
      "what is text among other bytes stays");
}

void checkMeasures(std::string_view text, const std::u32string& characters) {
  std::size_t units = 0;
  std::vector<bool> isInside(text.size() + 1, true);
  std::size_t position = 0;
  for (const char32_t character : characters) {
    units += character > 0xFFFF ? 2 : 1;
    isInside[position] = false;
    position += fuzz::encode({&character, 1}).size();
  }
  isInside[position] = false;
  fuzz::check(text::utf16Length(text) == units, "a text has its length in UTF-16");
  for (std::size_t i = 0; i <= text.size(); ++i) {
    fuzz::check(text::isInsideCharacter(text, i) == isInside[i],
                "a cut is inside a character or not");
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view input = fuzz::asText(data, size);
  const fuzz::ExactCopy copy(fuzz::unfold(input));
  const std::string_view text = copy.view();
  const auto characters = fuzz::decode(text);
  fuzz::check(text::isUtf8(text) == characters.has_value(), "a text is UTF-8 or not");
  if (characters) {
    fuzz::check(text::toUtf8(text) == text, "what is text stays as it is");
    checkMeasures(text, *characters);
  } else {
    checkMended(text);
  }
  return 0;
}
