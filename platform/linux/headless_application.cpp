// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/headless_application.h"

#include <unistd.h>

#include <stdexcept>
#include <utility>
#include <vector>

#include "platform/boundary.h"
#include "platform/linux/epoll_set.h"

// Loading the toolkit takes longer than all else that a run does before its first command.

namespace platform {

namespace {

class HeadlessApplication final : public Application {
 public:
  HeadlessApplication() {
    // The toolkit refuses this as well. The rights of another user would go to whatever stands in
    // PATH, and to a file of any name.
    if (getuid() != geteuid()) {
      throw std::runtime_error("it was started with the rights of another user");
    }
  }

  int run() override {
    while (true) {
      turn();
    }
  }

  void turn() override {
    const std::vector<std::function<void()>> due = std::exchange(tasks, {});
    for (const std::function<void()>& task : due) {
      enter(task);
    }
    enter([&] {
      watched.dispatch(due.empty() ? EpollSet::Wait::untilSomeoneIsReady : EpollSet::Wait::no);
    });
  }

  void post(std::function<void()> task) override { tasks.push_back(std::move(task)); }

  DescriptorSet& descriptors() override { return watched; }

  std::unique_ptr<HttpConnection> send(HttpRequest /*request*/,
                                       HttpConnectionDelegate& /*delegate*/,
                                       std::chrono::milliseconds /*stallLimit*/) override {
    throw std::logic_error("this run was not meant to send anything");
  }

 private:
  std::vector<std::function<void()>> tasks;
  EpollSet watched;
};

}  // namespace

std::unique_ptr<Application> makeHeadlessApplication(int& /*argc*/, char** /*argv*/) {
  return std::make_unique<HeadlessApplication>();
}

}  // namespace platform
