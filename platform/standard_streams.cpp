// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/standard_streams.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace platform {

void writeStandardOutput(std::string_view bytes) {
  const int problem = writeAll(STDOUT_FILENO, bytes);
  if (problem != 0 && problem != EPIPE) {
    throw std::system_error(problem, std::generic_category(), "cannot write to standard output");
  }
}

int writeAll(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = write(fd, bytes.data(), bytes.size());
    if (count >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(count));
    } else if (errno == EAGAIN) {
      // Whoever shares the descriptor with us may have made it non-blocking.
      pollfd wait{.fd = fd, .events = POLLOUT, .revents = 0};
      poll(&wait, 1, -1);
    } else if (errno != EINTR) {
      return errno;
    }
  }
  return 0;
}

}  // namespace platform
