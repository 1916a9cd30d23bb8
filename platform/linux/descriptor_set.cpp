// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/descriptor_set.h"

#include <QSocketNotifier>
#include <sys/epoll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <span>
#include <system_error>

#include "platform/boundary.h"

namespace platform {

namespace {

// Few enough that the window repaints between two dispatches even when every command prints as fast
// as it can.
constexpr int eventsPerDispatch = 32;

[[noreturn]] void fail(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

int createSet() {
  const int set = epoll_create1(EPOLL_CLOEXEC);
  if (set < 0) {
    fail("cannot create the set of watched descriptors");
  }
  return set;
}

}  // namespace

// All descriptors are behind one single descriptor of the toolkit's loop, so that the cost of an
// event does not grow with the number of running commands.
class DescriptorSet::Parts {
 public:
  Parts() : set(createSet()), notifier(set, QSocketNotifier::Read) {
    QObject::connect(&notifier, &QSocketNotifier::activated, &notifier,
                     [this] { enter([this] { dispatch(); }); });
  }
  ~Parts() {
    notifier.setEnabled(false);
    close(set);
  }
  Parts(const Parts&) = delete;
  Parts& operator=(const Parts&) = delete;

  void watch(int fd, DescriptorWatcher& watcher) const;
  void unwatch(int fd, const DescriptorWatcher& watcher);

 private:
  void dispatch();

  int set;
  QSocketNotifier notifier;
  std::span<DescriptorWatcher*> pending;
};

void DescriptorSet::Parts::watch(int fd, DescriptorWatcher& watcher) const {
  epoll_event event{.events = EPOLLIN, .data = {.ptr = &watcher}};
  if (epoll_ctl(set, EPOLL_CTL_ADD, fd, &event) != 0) {
    fail("cannot watch a descriptor");
  }
}

void DescriptorSet::Parts::unwatch(int fd, const DescriptorWatcher& watcher) {
  epoll_ctl(set, EPOLL_CTL_DEL, fd, nullptr);
  std::replace(pending.begin(), pending.end(), const_cast<DescriptorWatcher*>(&watcher),
               static_cast<DescriptorWatcher*>(nullptr));
}

void DescriptorSet::Parts::dispatch() {
  std::array<epoll_event, eventsPerDispatch> events;
  const int count = epoll_wait(set, events.data(), eventsPerDispatch, 0);
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

DescriptorSet::DescriptorSet() : parts(std::make_unique<Parts>()) {}

DescriptorSet::~DescriptorSet() = default;

void DescriptorSet::watch(int fd, DescriptorWatcher& watcher) {
  parts->watch(fd, watcher);
}

void DescriptorSet::unwatch(int fd, const DescriptorWatcher& watcher) {
  parts->unwatch(fd, watcher);
}

}  // namespace platform
