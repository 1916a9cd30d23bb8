// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/files/creation_time.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/files/birth_time.h"
#include "support/temporary_folder.h"

namespace platform {
namespace {

TEST(CreationTime, IsInNanoseconds) {
  const support::TemporaryFolder folder;
  const std::string path = folder.write("file", "");
  struct stat facts {};
  ASSERT_EQ(lstat(path.c_str(), &facts), 0);
  const std::timespec time = birthTime(facts);
  EXPECT_EQ(creationTimeNs(path), time.tv_sec * 1'000'000'000 + time.tv_nsec);
}

TEST(CreationTime, IsThatOfALinkItself) {
  const support::TemporaryFolder folder;
  std::filesystem::create_symlink("nowhere", folder.path("link"));
  EXPECT_GT(creationTimeNs(folder.path("link")).value_or(0), 0);
}

TEST(CreationTime, IsNoneOfWhatIsMissing) {
  const support::TemporaryFolder folder;
  EXPECT_EQ(creationTimeNs(folder.path("missing")), std::nullopt);
}

}  // namespace
}  // namespace platform
