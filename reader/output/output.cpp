// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "reader/output/output.h"

#include <cerrno>
#include <cstdio>
#include <system_error>

namespace reader {

void Output::write(std::string_view text) {
  constexpr std::size_t bufferMax = std::size_t{1} << 20;
  buffer += text;
  if (buffer.size() >= bufferMax) {
    finish();
  }
}

void Output::finish() {
  sink(buffer);
  buffer.clear();
}

void writeStandardOutput(std::string_view text) {
  errno = 0;
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0) {
    throw std::system_error(errno, std::generic_category(), "standard output");
  }
}

}  // namespace reader
