// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "text/progress_line.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <string>

namespace text {

namespace {

// To the first column, and clear the line.
constexpr std::string_view erase = "\r\x1b[K";
constexpr std::string_view ellipsis = "...";

volatile std::sig_atomic_t isShown = 0;

std::size_t columns() {
  constexpr std::size_t usual = 80;
  winsize size{};
  const bool isKnown = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return isKnown ? size.ws_col : usual;
}

void write(std::string_view bytes) {
  [[maybe_unused]] const ssize_t count = ::write(STDERR_FILENO, bytes.data(), bytes.size());
}

}  // namespace

bool canShowProgressLine() {
  const char* terminal = std::getenv("TERM");
  return isatty(STDERR_FILENO) != 0 && terminal != nullptr && std::string_view(terminal) != "dumb";
}

void showProgressLine(std::string_view line) {
  std::string shown(line);
  std::replace_if(
      shown.begin(), shown.end(), [](char byte) { return byte < ' ' || byte > '~'; }, '?');
  // A terminal may wrap a line that fills its last column.
  const std::size_t width = std::max(columns(), ellipsis.size() + 1) - 1;
  if (shown.size() > width) {
    shown.replace(width - ellipsis.size(), std::string::npos, ellipsis);
  }
  isShown = 1;
  write(std::string(erase) + shown);
}

void eraseProgressLine() {
  if (isShown != 0) {
    isShown = 0;
    write(erase);
  }
}

}  // namespace text
