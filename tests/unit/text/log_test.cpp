// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "text/log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace text {
namespace {

std::string logged(const std::string& message) {
  testing::internal::CaptureStderr();
  log(message);
  return testing::internal::GetCapturedStderr();
}

TEST(Log, PutsTimeNameAndNumberInFrontOfTheMessage) {
  EXPECT_THAT(
      logged("a message"),
      testing::MatchesRegex("[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}[.][0-9]{3} "
                            "unit_tests[[]" +
                            std::to_string(getpid()) + "[]] a message\n"));
}

TEST(Log, EndsAMessageWithOneLineFeed) {
  EXPECT_THAT(logged("done\n"), testing::EndsWith("] done\n"));
  EXPECT_THAT(logged(""), testing::EndsWith("] \n"));
  EXPECT_THAT(logged("\nusage\n\n"), testing::EndsWith("] \nusage\n\n"));
}

}  // namespace
}  // namespace text
