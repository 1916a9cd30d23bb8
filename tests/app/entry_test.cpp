// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "app/entry.h"

#include <gtest/gtest.h>

namespace app {
namespace {

bool hasSerialNumber(const std::vector<const char*>& arguments) {
  return handleGateKeeperArgument(static_cast<int>(arguments.size()), arguments.data());
}

TEST(Entry, FindsAProcessSerialNumberAmongTheArguments) {
  EXPECT_TRUE(hasSerialNumber({"program", "-psn_0_123"}));
  EXPECT_TRUE(hasSerialNumber({"program", "-s", "-psn_"}));
  EXPECT_TRUE(hasSerialNumber({"-psn_1"}));
}

TEST(Entry, TakesNoOtherArgumentForASerialNumber) {
  EXPECT_FALSE(hasSerialNumber({}));
  EXPECT_FALSE(hasSerialNumber({"program"}));
  EXPECT_FALSE(hasSerialNumber({"program", "-psn", "-ps", "-", ""}));
  EXPECT_FALSE(hasSerialNumber({"program", "-PSN_0", " -psn_0", "x-psn_0"}));
}

}  // namespace
}  // namespace app
