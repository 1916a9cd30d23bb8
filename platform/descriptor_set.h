// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The descriptors that the program waits on. Used by the main thread only.

#pragma once

namespace platform {

/// Told when its descriptor has something to read or has reached its end.
class DescriptorWatcher {
 public:
  DescriptorWatcher() = default;
  DescriptorWatcher(const DescriptorWatcher&) = delete;
  DescriptorWatcher& operator=(const DescriptorWatcher&) = delete;
  virtual void descriptorReady() = 0;

 protected:
  ~DescriptorWatcher() = default;
};

/// Watches any number of descriptors in the turns of the main loop. It never reads them: each
/// watcher reads its own. One turn does so much only that a window stays alive, however much there
/// is to be read.
class DescriptorSet {
 public:
  DescriptorSet() = default;
  virtual ~DescriptorSet() = default;
  DescriptorSet(const DescriptorSet&) = delete;
  DescriptorSet& operator=(const DescriptorSet&) = delete;

  /// Calls `watcher` again and again while `fd` is ready. Both must live until unwatch. Throws
  /// std::system_error.
  virtual void watch(int fd, DescriptorWatcher& watcher) = 0;

  /// Ends the watch; from here on `watcher` is not called, not even for what the running turn has
  /// already seen. Does nothing for what is not watched.
  virtual void unwatch(int fd, const DescriptorWatcher& watcher) = 0;
};

}  // namespace platform
