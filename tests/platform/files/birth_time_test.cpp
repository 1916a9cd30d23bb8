// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/files/birth_time.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace platform {
namespace {

// As macOS declares it, whose time of the last change has another name, too.
struct FactsOfMacOs {
  std::timespec st_birthtimespec;
  std::timespec st_ctimespec;
};

TEST(BirthTime, IsTheSystemsOwnWhereItHasOne) {
  const FactsOfMacOs facts{.st_birthtimespec = {.tv_sec = 3, .tv_nsec = 4},
                           .st_ctimespec = {.tv_sec = 5, .tv_nsec = 6}};
  EXPECT_EQ(birthTime(facts).tv_sec, 3);
  EXPECT_EQ(birthTime(facts).tv_nsec, 4);
}

TEST(BirthTime, IsTheLastChangeOfStatusElsewhere) {
  struct stat facts {};
  facts.st_ctim = {.tv_sec = 7, .tv_nsec = 8};
  EXPECT_EQ(birthTime(facts).tv_sec, 7);
  EXPECT_EQ(birthTime(facts).tv_nsec, 8);
}

}  // namespace
}  // namespace platform
