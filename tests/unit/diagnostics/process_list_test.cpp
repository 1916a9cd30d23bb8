// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "diagnostics/process_list.h"

#include <gtest/gtest.h>

#include "support/process_controller.h"
#include "text/notification_center.h"

namespace diagnostics {
namespace {

TEST(ProcessList, CountsWhatHasFinished) {
  ProcessList list;
  EXPECT_EQ(list.size(), 0U);
  EXPECT_EQ(list.finishedCount(), 0U);
  const auto waits = support::makeProcess();
  const auto ends = support::makeProcess();
  list.append(waits);
  list.append(ends);
  std::uint32_t whenAnnounced = 0;
  text::NotificationCenter::defaultCenter().addObserver(
      ProcessTerminatedNotification, ends.get(), [&] { whenAnnounced = list.finishedCount(); });
  waits->start("/bin/sh", {"-c", "exec tail -f /dev/null"}, std::nullopt);
  ends->start("/bin/true", {}, std::nullopt);
  EXPECT_EQ(list.finishedCount(), 0U);
  support::turnUntil([&] { return ends->isFinished(); });
  EXPECT_EQ(list.finishedCount(), 1U);
  EXPECT_EQ(whenAnnounced, 1U);
}

TEST(ProcessList, ACopyStaysWithItsRun) {
  ProcessList list;
  const auto process = support::makeProcess();
  list.append(process);
  const ProcessList archived = list;
  list = ProcessList();
  process->start("/bin/true", {}, std::nullopt);
  support::turnUntil([&] { return process->isFinished(); });
  EXPECT_EQ(archived.size(), 1U);
  EXPECT_EQ(archived.finishedCount(), 1U);
  EXPECT_EQ(list.finishedCount(), 0U);
}

}  // namespace
}  // namespace diagnostics
