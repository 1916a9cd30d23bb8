// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/descriptor_set.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <functional>
#include <system_error>

namespace platform {
namespace {

struct Watcher final : DescriptorWatcher {
  Watcher() : fd(eventfd(0, EFD_CLOEXEC)) {}
  ~Watcher() { close(fd); }
  void descriptorReady() override {
    ++calls;
    if (then) {
      then();
    }
  }
  void makeReady() const { EXPECT_EQ(eventfd_write(fd, 1), 0); }

  int fd;
  int calls = 0;
  std::function<void()> then;
};

TEST(DescriptorSet, CallsWhoIsReady) {
  DescriptorSet set;
  Watcher ready;
  Watcher idle;
  set.watch(ready.fd, ready);
  set.watch(idle.fd, idle);
  set.dispatch();
  EXPECT_EQ(ready.calls, 0);
  ready.makeReady();
  set.dispatch();
  set.dispatch();
  EXPECT_EQ(ready.calls, 2);
  EXPECT_EQ(idle.calls, 0);
}

TEST(DescriptorSet, IsReadableWhileAnyoneIsReady) {
  DescriptorSet set;
  Watcher watcher;
  set.watch(watcher.fd, watcher);
  pollfd readable{.fd = set.descriptor(), .events = POLLIN, .revents = 0};
  EXPECT_EQ(poll(&readable, 1, 0), 0);
  watcher.makeReady();
  EXPECT_EQ(poll(&readable, 1, 0), 1);
}

TEST(DescriptorSet, DoesNotCallWhoHasLeftInTheSameDispatch) {
  DescriptorSet set;
  Watcher first;
  Watcher second;
  for (Watcher* watcher : {&first, &second}) {
    set.watch(watcher->fd, *watcher);
    watcher->makeReady();
    watcher->then = [&] {
      set.unwatch(first.fd, first);
      set.unwatch(second.fd, second);
    };
  }
  set.dispatch();
  EXPECT_EQ(first.calls + second.calls, 1);
}

TEST(DescriptorSet, RefusesWhatCannotBeWatched) {
  DescriptorSet set;
  Watcher watcher;
  EXPECT_THROW(set.watch(-1, watcher), std::system_error);
}

}  // namespace
}  // namespace platform
