// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// What the fuzz targets share: how an input is read, and how a broken property is reported.

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzz {

inline std::string_view asText(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

/// Says what does not hold, and ends the process, by which the fuzzer knows and keeps the input.
void check(bool holds, const char* property);

/// An input as a row of fields, each ended by a separator or by the end of the input.
class Fields {
 public:
  Fields(std::string_view input, char fieldSeparator) : rest(input), separator(fieldSeparator) {}

  bool atEnd() const { return ended; }
  std::string_view next();

 private:
  std::string_view rest;
  char separator;
  bool ended = false;
};

/// `input` with every byte 1, a byte N and a character replaced by N copies of the character, so
/// that a few bytes make a text longer than any block in which the program looks at texts; "\1--"
/// is the separator of the report. It ends soon after `bytesMax` bytes, little enough for thousands
/// of inputs a second.
std::string unfold(std::string_view input, std::size_t bytesMax = 32UL * 1024);

/// A copy with nothing behind it, so that a byte read beyond the end is found.
class ExactCopy {
 public:
  explicit ExactCopy(std::string_view text);
  std::string_view view() const { return {bytes.get(), size}; }

 private:
  std::unique_ptr<char[]> bytes;
  std::size_t size;
};

}  // namespace fuzz
