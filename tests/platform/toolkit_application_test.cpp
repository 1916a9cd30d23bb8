// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/toolkit_application.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <stdexcept>

#include "support/application.h"

namespace platform {
namespace {

TEST(Application, RunsAPostedTaskInALaterTurn) {
  Application& application = support::application();
  std::string order;
  application.post([&] {
    order += 'a';
    application.post([&] { order += 'c'; });
    order += 'b';
  });
  EXPECT_EQ(order, "");
  support::turnUntil([&] { return order.size() == 3; });
  EXPECT_EQ(order, "abc");
}

struct ReadOnce final : DescriptorWatcher {
  explicit ReadOnce(int readEnd) : fd(readEnd) {}
  void descriptorReady() override {
    char byte = 0;
    EXPECT_EQ(read(fd, &byte, 1), 1);
    text += byte;
  }
  int fd;
  std::string text;
};

TEST(Application, TellsTheWatcherOfADescriptor) {
  std::array<int, 2> ends;
  ASSERT_EQ(pipe(ends.data()), 0);
  ReadOnce watcher(ends[0]);
  DescriptorSet& descriptors = support::application().descriptors();
  descriptors.watch(ends[0], watcher);
  ASSERT_EQ(write(ends[1], "xy", 2), 2);
  support::turnUntil([&] { return watcher.text == "xy"; });
  descriptors.unwatch(ends[0], watcher);
  close(ends[0]);
  close(ends[1]);
}

TEST(ApplicationDeathTest, ExitEndsTheProcessWithItsStatus) {
  EXPECT_EXIT(support::application().exit(3), testing::ExitedWithCode(3), "^$");
}

TEST(ApplicationDeathTest, ATaskThatThrowsEndsTheProcess) {
  EXPECT_EXIT(
      {
        support::application().post([] { throw std::runtime_error("a reason"); });
        support::turnUntil([] { return false; });
      },
      testing::KilledBySignal(SIGABRT), "the program ends after an error: a reason\n");
}

}  // namespace
}  // namespace platform
