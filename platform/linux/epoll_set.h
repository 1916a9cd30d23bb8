// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Descriptors behind a single one, so that the cost of an event does not grow with their number.

#pragma once

#include <span>

#include "platform/descriptor_set.h"

namespace platform {

/// Watches by epoll. Who turns the main loop calls dispatch().
class EpollSet final : public DescriptorSet {
 public:
  /// Throws std::system_error when the system has no descriptor left.
  EpollSet();
  ~EpollSet() override;

  void watch(int fd, DescriptorWatcher& watcher) override;
  void unwatch(int fd, const DescriptorWatcher& watcher) override;

  /// What is readable as long as dispatch() finds a watcher to call.
  int descriptor() const { return set; }

  enum class Wait { no, untilSomeoneIsReady };

  /// Calls those that are ready, 32 of them at most, and lets their errors out. A signal ends a
  /// wait. Throws std::system_error when the system refuses to wait.
  void dispatch(Wait wait);

 private:
  int set;
  std::span<DescriptorWatcher*> pending;
};

}  // namespace platform
