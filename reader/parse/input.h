// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The bytes of a report, from a file or standard input.

#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

namespace reader {

/// The bytes of a file.
class Input {
 public:
  /// Reads the file at `path`, or standard input for "-". Throws std::system_error if that fails.
  explicit Input(const std::string& path);

  std::string_view text() const { return {bytes.get(), size}; }

 private:
  struct Free {
    void operator()(char* memory) const { std::free(memory); }
  };

  void reserve(std::size_t capacity, const std::string& shownName);

  // Grown by realloc, which moves long texts without copying them.
  std::unique_ptr<char, Free> bytes;
  std::size_t size = 0;
};

}  // namespace reader
