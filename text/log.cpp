// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "text/log.h"

#include <sys/ioctl.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>

#include "text/standard_streams.h"

namespace text {

namespace {

std::string processName;

// To the first column, and clear the line.
constexpr std::string_view erase = "\r\x1b[K";
constexpr std::string_view ellipsis = "...";

volatile std::sig_atomic_t isShown = 0;

std::size_t columns() {
  constexpr std::size_t usual = 80;
  winsize size{};
  ioctl(STDERR_FILENO, TIOCGWINSZ, &size);
  return size.ws_col > 0 ? size.ws_col : usual;
}

void write(std::string_view bytes) {
  // In the background, the terminal shows the shell's prompt.
  const pid_t foreground = tcgetpgrp(STDERR_FILENO);
  if (foreground >= 0 && foreground != getpgrp()) {
    return;
  }
  [[maybe_unused]] const ssize_t count = ::write(STDERR_FILENO, bytes.data(), bytes.size());
}

std::string prefix() {
  timeval now{};
  gettimeofday(&now, nullptr);
  tm local{};
  localtime_r(&now.tv_sec, &local);
  std::array<char, 32> time{};
  std::strftime(time.data(), time.size(), "%Y-%m-%d %H:%M:%S", &local);
  std::array<char, 8> milliseconds{};
  std::snprintf(milliseconds.data(), milliseconds.size(), ".%03d",
                static_cast<int>(now.tv_usec / 1000));
  return std::string(time.data()) + milliseconds.data() + ' ' + processName + '[' +
         std::to_string(getpid()) + "] ";
}

}  // namespace

void setProcessName(std::string_view path) {
  processName = path.substr(path.rfind('/') + 1);
}

void log(std::string_view message) {
  std::string line = prefix();
  line += message;
  if (!message.ends_with('\n')) {
    line += '\n';
  }
  eraseProgressLine();
  writeAll(STDERR_FILENO, {line});
}

bool canShowProgressLine() {
  const char* terminal = std::getenv("TERM");
  return isatty(STDERR_FILENO) != 0 && terminal != nullptr && std::string_view(terminal) != "dumb";
}

void showProgressLine(std::string_view line) {
  std::string shown(line);
  std::ranges::replace_if(shown, [](char byte) { return byte < ' ' || byte > '~'; }, '?');
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
