// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The descriptors that the program waits on, behind one single descriptor, so that the cost of an
// event does not grow with the number of running commands. Used by the main thread only.

#pragma once

#include <cstdint>
#include <span>

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

/// Watches any number of descriptors. It never reads them: its owner waits until descriptor() is
/// readable, then calls dispatch(), and each watcher reads its own.
class DescriptorSet {
 public:
  /// Throws std::system_error when the system has no descriptor left.
  DescriptorSet();
  ~DescriptorSet();
  DescriptorSet(const DescriptorSet&) = delete;
  DescriptorSet& operator=(const DescriptorSet&) = delete;

  /// Readable whenever at least one watched descriptor is ready.
  int descriptor() const { return set; }

  /// Calls `watcher` on every dispatch while `fd` is ready. Both must live until unwatch. Throws
  /// std::system_error.
  void watch(int fd, DescriptorWatcher& watcher);

  /// Ends the watch; from here on `watcher` is not called, not even for what the running dispatch
  /// has already seen.
  void unwatch(int fd, const DescriptorWatcher& watcher);

  /// Calls the watchers of the descriptors that are ready now, at most a few dozen, and returns;
  /// never waits.
  void dispatch();

 private:
  int set;
  std::span<DescriptorWatcher*> pending;
};

}  // namespace platform
