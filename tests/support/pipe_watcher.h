// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// A watcher of its own pipe.

#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <functional>

#include "platform/event_loop/event_loop.h"

namespace support {

struct PipeWatcher final : platform::DescriptorWatcher {
  PipeWatcher() { EXPECT_EQ(pipe(ends.data()), 0); }
  ~PipeWatcher() {
    close(ends[0]);
    close(ends[1]);
  }
  void descriptorReady() override {
    ++calls;
    if (then) {
      then();
    }
  }
  int fd() const { return ends[0]; }
  void makeReady() const { EXPECT_EQ(write(ends[1], "x", 1), 1); }
  void takeByte() const {
    char byte = 0;
    EXPECT_EQ(read(fd(), &byte, 1), 1);
  }

  std::array<int, 2> ends{};
  int calls = 0;
  std::function<void()> then;
};

}  // namespace support
