// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "diagnostics/endpoints.h"

#include <gtest/gtest.h>

#include <array>

namespace diagnostics {
namespace {

// The record is made of texts only, so it can be walked as a row of them: a role that is added is
// tested as well.
TEST(Endpoints, EveryRoleHasAValueWithoutBlanks) {
  const Endpoints& endpoints = builtInEndpoints();
  static_assert(sizeof(Endpoints) % sizeof(std::string) == 0);
  const auto* roles = reinterpret_cast<const std::string*>(&endpoints);
  constexpr std::size_t count = sizeof(Endpoints) / sizeof(std::string);
  EXPECT_EQ(count, 43U);
  for (std::size_t i = 0; i < count; ++i) {
    EXPECT_FALSE(roles[i].empty()) << "role " << i;
    EXPECT_EQ(roles[i].find_first_of(" \t\n\"'$`"), std::string::npos) << roles[i];
  }
}

TEST(Endpoints, ReportsGoToASecureAddress) {
  const std::string& url = builtInEndpoints().submitUrl;
  EXPECT_TRUE(url.starts_with("https://"));
  EXPECT_TRUE(url.ends_with("/diagnosticsubmit"));
}

}  // namespace
}  // namespace diagnostics
