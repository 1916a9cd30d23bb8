// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The end of a child process as an event of the main loop. Main thread only.

#pragma once

#include "platform/descriptor_set.h"

namespace platform {

/// Waits for the end of one child process, as spawn() has started it, and leaves it to be
/// collected. Children that are not watched are neither asked after nor collected: they belong to
/// somebody else.
class ChildEnd {
 public:
  /// `descriptorSet` must outlive the watch.
  explicit ChildEnd(DescriptorSet& descriptorSet) : descriptors(descriptorSet) {}
  ~ChildEnd() { unwatch(); }
  ChildEnd(const ChildEnd&) = delete;
  ChildEnd& operator=(const ChildEnd&) = delete;

  /// Calls `ended`, once at least, in a turn of the main loop after the child that spawn() names
  /// `spawned` has ended, be it before this call. Nobody must have collected it. Returns whether it
  /// can be watched; errno tells why not.
  bool watch(int spawned, DescriptorWatcher& ended);

  /// From here on the watcher is not called.
  void unwatch();

 private:
  DescriptorSet& descriptors;
  DescriptorWatcher* watcher = nullptr;
  int child = -1;
};

}  // namespace platform
