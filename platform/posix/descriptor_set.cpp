// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/descriptor_set.h"

#include <QSocketNotifier>
#include <fcntl.h>

#include <cerrno>
#include <system_error>
#include <unordered_map>

#include "platform/boundary.h"

namespace platform {

// One notifier a descriptor. A turn of the loop calls each watcher once at most.
class DescriptorSet::Parts {
 public:
  void watch(int fd, DescriptorWatcher& watcher) {
    if (fcntl(fd, F_GETFD) < 0) {
      throw std::system_error(errno, std::generic_category(), "cannot watch a descriptor");
    }
    auto* notifier = new QSocketNotifier(fd, QSocketNotifier::Read, &owner);
    QObject::connect(notifier, &QSocketNotifier::activated, notifier,
                     [&watcher] { enter([&watcher] { watcher.descriptorReady(); }); });
    notifiers[fd] = notifier;
  }

  void unwatch(int fd) {
    const auto known = notifiers.find(fd);
    if (known != notifiers.end()) {
      // It may be the one whose event is under way.
      known->second->setEnabled(false);
      known->second->deleteLater();
      notifiers.erase(known);
    }
  }

 private:
  QObject owner;
  std::unordered_map<int, QSocketNotifier*> notifiers;
};

DescriptorSet::DescriptorSet() : parts(std::make_unique<Parts>()) {}

DescriptorSet::~DescriptorSet() = default;

void DescriptorSet::watch(int fd, DescriptorWatcher& watcher) {
  parts->watch(fd, watcher);
}

void DescriptorSet::unwatch(int fd, const DescriptorWatcher& /*watcher*/) {
  parts->unwatch(fd);
}

}  // namespace platform
