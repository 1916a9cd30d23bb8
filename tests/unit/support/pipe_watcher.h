// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// A pipe whose readable end an event loop watches.

#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <functional>

#include "platform/event_loop/event_loop.h"

namespace support {

struct PipeWatcher {
  PipeWatcher() { EXPECT_EQ(pipe(ends.data()), 0); }
  ~PipeWatcher() {
    close(ends[0]);
    close(ends[1]);
  }
  PipeWatcher(const PipeWatcher&) = delete;
  PipeWatcher& operator=(const PipeWatcher&) = delete;

  void watch(platform::EventLoop& loop) {
    loop.watch(fd(), platform::EventLoop::Interest::readable, [this] {
      ++calls;
      then();
    });
  }
  int fd() const { return ends[0]; }
  void makeReady() const { EXPECT_EQ(write(ends[1], "x", 1), 1); }
  void takeByte() const {
    char byte = 0;
    EXPECT_EQ(read(fd(), &byte, 1), 1);
  }

  std::array<int, 2> ends{};
  int calls = 0;
  std::function<void()> then = [] {};
};

}  // namespace support
