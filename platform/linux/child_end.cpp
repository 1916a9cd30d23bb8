// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/child_end.h"

#include <unistd.h>

namespace platform {

// The child is known by its pidfd, which is readable once it has ended.

bool ChildEnd::watch(int spawned, DescriptorWatcher& ended) {
  child = spawned;
  watcher = &ended;
  descriptors.watch(child, ended);
  return true;
}

void ChildEnd::unwatch() {
  if (child >= 0) {
    descriptors.unwatch(child, *watcher);
    close(child);
    child = -1;
  }
}

}  // namespace platform
