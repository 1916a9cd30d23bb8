// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/toolkit_descriptor_set.h"

#include <QSocketNotifier>

#include "platform/boundary.h"
#include "platform/linux/epoll_set.h"

namespace platform {

namespace {

// To the toolkit, all descriptors are one.
class ToolkitDescriptorSet final : public DescriptorSet {
 public:
  ToolkitDescriptorSet() : notifier(descriptors.descriptor(), QSocketNotifier::Read) {
    QObject::connect(&notifier, &QSocketNotifier::activated, &notifier,
                     [this] { enter([this] { descriptors.dispatch(EpollSet::Wait::no); }); });
  }

  void watch(int fd, DescriptorWatcher& watcher) override { descriptors.watch(fd, watcher); }
  void unwatch(int fd, const DescriptorWatcher& watcher) override {
    descriptors.unwatch(fd, watcher);
  }

 private:
  EpollSet descriptors;
  QSocketNotifier notifier;
};

}  // namespace

std::unique_ptr<DescriptorSet> makeToolkitDescriptorSet() {
  return std::make_unique<ToolkitDescriptorSet>();
}

}  // namespace platform
