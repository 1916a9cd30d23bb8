// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// What halvik-report prints.

#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace reader {

/// Throws std::system_error if standard output does not take all.
void writeStandardOutput(std::string_view text);

/// Passes on what is written, in large blocks.
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
