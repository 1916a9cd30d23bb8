// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "diagnostics/beacon_logs.h"

#include <gtest/gtest.h>

namespace diagnostics {
namespace {

using Paths = std::vector<std::string>;

TEST(BeaconLogs, StandInThreeFoldersInAFixedOrder) {
  EXPECT_EQ(beaconLogFolders(),
            (Paths{"/Library/Application Support/Halvik Skivra/beacon-logs/ipblock/",
                   "/Library/Application Support/Halvik Skivra/beacon-logs/probe/",
                   "/Library/Application Support/Halvik Skivra/beacon-logs/service/"}));
}

TEST(BeaconLogs, AreReadFromTheOldestToTheNewest) {
  EXPECT_EQ(orderByCreation("/logs/", {{"a", 10'00}, {"b", 9'00}, {"c", 11'00}}),
            (Paths{"/logs/b", "/logs/a", "/logs/c"}));
}

TEST(BeaconLogs, OfTheSameAgeAreOrderedByName) {
  EXPECT_EQ(orderByCreation("/logs/", {{"b", 1}, {"a", 1}, {"c", 0}}),
            (Paths{"/logs/c", "/logs/a", "/logs/b"}));
}

TEST(BeaconLogs, AreReadByAShellThatSeesTheirNameUnescaped) {
  EXPECT_EQ(readerCommandLine("/logs/a b.log"), "cat \"/logs/a b.log\"");
  EXPECT_EQ(readerCommandLine("/logs/$x`y\"z"), "cat \"/logs/$x`y\"z\"");
}

}  // namespace
}  // namespace diagnostics
