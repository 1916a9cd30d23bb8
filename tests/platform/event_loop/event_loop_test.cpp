// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/toolkit_descriptor_set.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <system_error>
#include <vector>

#include "support/event_loop.h"
#include "support/pipe_watcher.h"

namespace platform {
namespace {

using Watcher = support::PipeWatcher;

// Long enough for a watcher to be called that must not be.
void turnSomeTimes() {
  for (int turns = 0; turns < 10; ++turns) {
    support::eventLoop().post([] {});
    support::turn();
  }
}

TEST(DescriptorSet, CallsWhoIsReady) {
  const std::unique_ptr<DescriptorSet> set = makeToolkitDescriptorSet();
  Watcher ready;
  Watcher idle;
  set->watch(ready.fd(), ready);
  set->watch(idle.fd(), idle);
  turnSomeTimes();
  EXPECT_EQ(ready.calls, 0);
  ready.makeReady();
  support::turnUntil([&] { return ready.calls >= 2; });
  EXPECT_EQ(idle.calls, 0);
  set->unwatch(ready.fd(), ready);
  set->unwatch(idle.fd(), idle);
}

TEST(DescriptorSet, CallsWhoseWriterHasGone) {
  const std::unique_ptr<DescriptorSet> set = makeToolkitDescriptorSet();
  Watcher watcher;
  set->watch(watcher.fd(), watcher);
  close(std::exchange(watcher.ends[1], -1));
  support::turnUntil([&] { return watcher.calls > 0; });
  set->unwatch(watcher.fd(), watcher);
}

TEST(DescriptorSet, DoesNotCallWhoHasLeftInTheSameTurn) {
  const std::unique_ptr<DescriptorSet> set = makeToolkitDescriptorSet();
  Watcher first;
  Watcher second;
  for (Watcher* watcher : {&first, &second}) {
    set->watch(watcher->fd(), *watcher);
    watcher->makeReady();
    watcher->then = [&] {
      set->unwatch(first.fd(), first);
      set->unwatch(second.fd(), second);
    };
  }
  support::turnUntil([&] { return first.calls + second.calls > 0; });
  turnSomeTimes();
  EXPECT_EQ(first.calls + second.calls, 1);
}

TEST(DescriptorSet, WatchesAnotherUnderANumberThatWasWatchedBefore) {
  const std::unique_ptr<DescriptorSet> set = makeToolkitDescriptorSet();
  Watcher before;
  set->watch(before.fd(), before);
  set->unwatch(before.fd(), before);
  Watcher after;
  before.makeReady();
  set->watch(before.fd(), after);
  support::turnUntil([&] { return after.calls > 0; });
  EXPECT_EQ(before.calls, 0);
  set->unwatch(before.fd(), after);
}

TEST(DescriptorSet, GivesEachOfManyItsTurnAndTheWindowItsOwn) {
  const std::unique_ptr<DescriptorSet> set = makeToolkitDescriptorSet();
  std::vector<std::unique_ptr<Watcher>> watchers;
  int callsBeforeTask = -1;
  int calls = 0;
  for (int i = 0; i < 200; ++i) {
    watchers.push_back(std::make_unique<Watcher>());
    watchers.back()->then = [&] { ++calls; };
    watchers.back()->makeReady();
    set->watch(watchers.back()->fd(), *watchers.back());
  }
  support::eventLoop().post([&] { callsBeforeTask = calls; });
  support::turnUntil([&] {
    return std::all_of(watchers.begin(), watchers.end(),
                       [](const auto& watcher) { return watcher->calls >= 3; });
  });
  EXPECT_GE(callsBeforeTask, 0);
  EXPECT_LE(callsBeforeTask, 200);
  for (const auto& watcher : watchers) {
    set->unwatch(watcher->fd(), *watcher);
  }
}

TEST(DescriptorSet, RefusesWhatCannotBeWatched) {
  const std::unique_ptr<DescriptorSet> set = makeToolkitDescriptorSet();
  Watcher watcher;
  EXPECT_THROW(set->watch(-1, watcher), std::system_error);
}

TEST(DescriptorSet, LetsGoOfWhatWasNeverWatched) {
  const std::unique_ptr<DescriptorSet> set = makeToolkitDescriptorSet();
  const Watcher watcher;
  set->unwatch(watcher.fd(), watcher);
}

}  // namespace
}  // namespace platform
