// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/linux/epoll_set.h"

#include <sys/epoll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <system_error>

namespace platform {

namespace {

// Few enough that the window repaints between two dispatches even when every command prints as fast
// as it can.
constexpr int eventsPerDispatch = 32;

[[noreturn]] void fail(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

}  // namespace

EpollSet::EpollSet() : set(epoll_create1(EPOLL_CLOEXEC)) {
  if (set < 0) {
    fail("cannot create the set of watched descriptors");
  }
}

EpollSet::~EpollSet() {
  close(set);
}

void EpollSet::watch(int fd, DescriptorWatcher& watcher) {
  epoll_event event{.events = EPOLLIN, .data = {.ptr = &watcher}};
  if (epoll_ctl(set, EPOLL_CTL_ADD, fd, &event) != 0) {
    fail("cannot watch a descriptor");
  }
}

void EpollSet::unwatch(int fd, const DescriptorWatcher& watcher) {
  epoll_ctl(set, EPOLL_CTL_DEL, fd, nullptr);
  std::replace(pending.begin(), pending.end(), const_cast<DescriptorWatcher*>(&watcher),
               static_cast<DescriptorWatcher*>(nullptr));
}

void EpollSet::dispatch(Wait wait) {
  std::array<epoll_event, eventsPerDispatch> events;
  const int count = epoll_wait(set, events.data(), eventsPerDispatch, wait == Wait::no ? 0 : -1);
  // To go on after anything but a signal could be to go on for ever.
  if (count < 0 && errno != EINTR) {
    fail("cannot wait for the watched descriptors");
  }
  std::array<DescriptorWatcher*, eventsPerDispatch> ready;
  for (int i = 0; i < count; ++i) {
    ready[static_cast<std::size_t>(i)] =
        static_cast<DescriptorWatcher*>(events[static_cast<std::size_t>(i)].data.ptr);
  }
  pending = std::span(ready.data(), static_cast<std::size_t>(std::max(count, 0)));
  for (DescriptorWatcher*& watcher : pending) {
    if (watcher != nullptr) {
      watcher->descriptorReady();
    }
  }
  pending = {};
}

}  // namespace platform
