// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/linux/memory_file.h"

#include <gtest/gtest.h>

#include <string>

#include "support/limit.h"

namespace platform {
namespace {

TEST(MemoryFile, ShowsWhatWasAppended) {
  MemoryFile file;
  EXPECT_TRUE(file.view().empty());
  EXPECT_TRUE(file.append("one "));
  EXPECT_TRUE(file.append(std::string(10'000'000, 'x')));
  EXPECT_TRUE(file.append(" two"));
  EXPECT_TRUE(file.view() == "one " + std::string(10'000'000, 'x') + " two");
}

TEST(MemoryFile, KeepsWhatItHasWhenMoreIsRefused) {
  const support::Limit small(RLIMIT_FSIZE, 100'000);
  MemoryFile file;
  EXPECT_TRUE(file.append("kept"));
  EXPECT_FALSE(file.append(std::string(200'000, 'x')));
  EXPECT_EQ(file.view(), "kept");
}

TEST(MemoryFile, CanBeReadButNotAppendedToOnceSealed) {
  MemoryFile file;
  EXPECT_TRUE(file.append("kept"));
  file.seal();
  EXPECT_FALSE(file.append("more"));
  EXPECT_EQ(file.view(), "kept");
}

TEST(MemoryFile, RefusesWithoutADescriptor) {
  const support::Limit none(RLIMIT_NOFILE, 0);
  MemoryFile file;
  EXPECT_FALSE(file.append("x"));
}

}  // namespace
}  // namespace platform
