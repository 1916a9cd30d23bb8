// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "text/standard_streams.h"

#include <poll.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <span>
#include <system_error>

namespace text {

namespace {

// As many buffers as one call takes; a report has several for each command.
constexpr std::size_t buffersPerWrite = IOV_MAX;

// Takes `count` written bytes off the front of `parts`.
std::span<iovec> withoutWritten(std::span<iovec> parts, std::size_t count) {
  while (!parts.empty() && count >= parts.front().iov_len) {
    count -= parts.front().iov_len;
    parts = parts.subspan(1);
  }
  if (!parts.empty()) {
    parts.front().iov_base = static_cast<char*>(parts.front().iov_base) + count;
    parts.front().iov_len -= count;
  }
  return parts;
}

}  // namespace

std::error_code writeStandardOutput(const Buffers& bytes) {
  const int problem = writeAll(STDOUT_FILENO, bytes);
  return {problem == EPIPE ? 0 : problem, std::generic_category()};
}

int writeAll(int fd, const Buffers& bytes) {
  std::vector<iovec> all;
  all.reserve(bytes.size());
  for (const std::string_view buffer : bytes) {
    if (!buffer.empty()) {
      all.push_back({.iov_base = const_cast<char*>(buffer.data()), .iov_len = buffer.size()});
    }
  }
  std::span<iovec> parts(all);
  while (!parts.empty()) {
    const ssize_t count =
        writev(fd, parts.data(), static_cast<int>(std::min(parts.size(), buffersPerWrite)));
    if (count >= 0) {
      parts = withoutWritten(parts, static_cast<std::size_t>(count));
    } else if (errno == EAGAIN) {
      // Another process that shares the descriptor may have made it non-blocking.
      pollfd wait{.fd = fd, .events = POLLOUT, .revents = 0};
      if (poll(&wait, 1, -1) < 0 && errno != EINTR) {
        return errno;
      }
    } else if (errno != EINTR) {
      return errno;
    }
  }
  return 0;
}

}  // namespace text
