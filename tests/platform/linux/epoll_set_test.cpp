// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/linux/epoll_set.h"

#include <gtest/gtest.h>
#include <sys/syscall.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>

#include "platform/headless_application.h"
#include "support/application.h"
#include "support/pipe_watcher.h"
#include "support/refused_call.h"

namespace platform {
namespace {

#ifdef SYS_epoll_wait
// The loop would else turn for ever, and nobody would hear why.
void waitInVain(Application& application) {
  support::PipeWatcher ready;
  ready.makeReady();
  application.descriptors().watch(ready.fd(), ready);
  if (!support::refuseCall(SYS_epoll_wait, EINVAL)) {
    std::_Exit(2);
  }
  while (true) {
    application.turn();
  }
}

constexpr const char* reason =
    "the program ends after an error: cannot wait for the watched descriptors: Invalid argument\n";

TEST(EpollSetDeathTest, EndsTheToolkitsLoopIfItCannotWait) {
  EXPECT_EXIT(waitInVain(support::application()), testing::KilledBySignal(SIGABRT), reason);
}

TEST(EpollSetDeathTest, EndsTheLightestLoopIfItCannotWait) {
  EXPECT_EXIT(
      {
        int argc = 0;
        const auto application = makeHeadlessApplication(argc, nullptr);
        waitInVain(*application);
      },
      testing::KilledBySignal(SIGABRT), reason);
}
#endif

}  // namespace
}  // namespace platform
