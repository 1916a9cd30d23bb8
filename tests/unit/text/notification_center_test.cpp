// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "text/notification_center.h"

#include <gtest/gtest.h>

namespace text {
namespace {

TEST(NotificationCenter, CallsTheObserversOfNameAndObjectInOrder) {
  NotificationCenter center;
  const int object = 0;
  const int other = 0;
  std::string calls;
  center.addObserver("Ended", &object, [&] { calls += 'a'; });
  center.addObserver("Ended", &object, [&] { calls += 'b'; });
  center.addObserver("Ended", &other, [&] { calls += 'x'; });
  center.addObserver("Started", &object, [&] { calls += 'y'; });
  center.post("Ended", &object);
  EXPECT_EQ(calls, "ab");
}

TEST(NotificationCenter, PassesOverWhatNobodyObserves) {
  const NotificationCenter center;
  const int object = 0;
  center.post("Ended", &object);
}

TEST(NotificationCenter, AnObserverMayObserveMore) {
  NotificationCenter center;
  const int object = 0;
  int calls = 0;
  center.addObserver("Ended", &object, [&] {
    for (int i = 0; i < 100; ++i) {
      center.addObserver("Ended", &object, [&] { ++calls; });
    }
    ++calls;
  });
  center.post("Ended", &object);
  EXPECT_EQ(calls, 1);
}

TEST(NotificationCenter, ForgetsAnObject) {
  NotificationCenter center;
  const int object = 0;
  int calls = 0;
  center.addObserver("Ended", &object, [&] { ++calls; });
  center.forget(&object);
  center.post("Ended", &object);
  EXPECT_EQ(calls, 0);
}

TEST(NotificationCenter, IsOneForTheProcess) {
  EXPECT_EQ(&NotificationCenter::defaultCenter(), &NotificationCenter::defaultCenter());
}

}  // namespace
}  // namespace text
