// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/toolkit_descriptor_set.h"

#include <QSocketNotifier>
#include <fcntl.h>

#include <cerrno>
#include <system_error>
#include <unordered_map>

#include "platform/boundary.h"

namespace platform {

namespace {

// One notifier a descriptor. A turn of the loop calls each watcher once at most.
class ToolkitDescriptorSet final : public DescriptorSet {
 public:
  void watch(int fd, DescriptorWatcher& watcher) override {
    if (fcntl(fd, F_GETFD) < 0) {
      throw std::system_error(errno, std::generic_category(), "cannot watch a descriptor");
    }
    auto* notifier = new QSocketNotifier(fd, QSocketNotifier::Read, &owner);
    QObject::connect(notifier, &QSocketNotifier::activated, notifier,
                     [&watcher] { enter([&watcher] { watcher.descriptorReady(); }); });
    notifiers[fd] = notifier;
  }

  void unwatch(int fd, const DescriptorWatcher& /*watcher*/) override {
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

}  // namespace

std::unique_ptr<DescriptorSet> makeToolkitDescriptorSet() {
  return std::make_unique<ToolkitDescriptorSet>();
}

}  // namespace platform
