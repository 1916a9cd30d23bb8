// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Files, standard input and standard output of halvik-report.

#pragma once

#include <cstddef>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace reader {

/// The bytes of a file, once.
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

/// Throws std::system_error if standard output does not take all.
void writeStandardOutput(std::string_view text);

/// Collects what is written into large pieces.
class Output {
 public:
  using Sink = std::function<void(std::string_view)>;

  explicit Output(Sink target = writeStandardOutput) : sink(std::move(target)) {}

  void write(std::string_view text);
  /// Passes on what is left.
  void finish();

 private:
  Sink sink;
  std::string buffer;
};

}  // namespace reader
