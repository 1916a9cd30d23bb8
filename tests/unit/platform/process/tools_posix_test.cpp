// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include "platform/process/tools.h"

namespace platform {
namespace {

TEST(Tools, AreTakenAsTheyAre) {
  for (const char* planned : {"/sbin/ping", "/usr/sbin/scutil", "/no/such/tool", "/bin/sh"}) {
    const Command command = locateCommand(planned, {"-c", "/sbin/ping -c 1 192.0.2.1"});
    EXPECT_EQ(command.path, planned);
    EXPECT_EQ(command.args, (std::vector<std::string>{"-c", "/sbin/ping -c 1 192.0.2.1"}));
  }
}

}  // namespace
}  // namespace platform
