// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "text/log.h"

#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <ctime>
#include <string>

#include "text/progress_line.h"
#include "text/standard_streams.h"

namespace text {

namespace {

std::string processName;

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

}  // namespace text
