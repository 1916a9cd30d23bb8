// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include <unistd.h>

#include <utility>

#include "platform/process/exit_watcher.h"

namespace platform {

// The handle is a pidfd, which is readable once the child has exited.

void ExitWatcher::watch(int handle, EventLoop::Handler exited) {
  child = handle;
  loop.watch(child, std::move(exited));
}

void ExitWatcher::unwatch() {
  if (child >= 0) {
    loop.unwatch(child);
    close(std::exchange(child, -1));
  }
}

}  // namespace platform
