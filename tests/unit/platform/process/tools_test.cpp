// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/process/tools.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace platform {
namespace {

TEST(Tools, ThatExistAreTakenAsTheyAre) {
  const Command command = locateCommand("/bin/sh", {"-c", "echo x", "y"});
  EXPECT_EQ(command.path, "/bin/sh");
  EXPECT_EQ(command.args, (std::vector<std::string>{"-c", "echo x", "y"}));
}

TEST(Tools, ThatAreUnknownAreTakenAsTheyAre) {
  EXPECT_EQ(locateCommand("/no/such/tool", {}).path, "/no/such/tool");
}

TEST(Tools, AreFoundWhereThisSystemKeepsThem) {
  for (const char* planned : {"/sbin/ping", "/usr/sbin/netstat", "/usr/sbin/traceroute",
                              "/usr/sbin/scutil", "/usr/sbin/system_profiler"}) {
    EXPECT_EQ(access(locateCommand(planned, {}).path.c_str(), X_OK), 0) << planned;
  }
}

TEST(Tools, InACommandLineAreFoundAsWell) {
  const std::string ping = locateCommand("/sbin/ping", {}).path;
  const auto lineOf = [](const std::string& line) {
    return locateCommand("/bin/sh", {"-c", line}).args[1];
  };
  EXPECT_EQ(lineOf("/sbin/ping -c 1 192.0.2.1"), ping + " -c 1 192.0.2.1");
  EXPECT_EQ(lineOf("/sbin/ping"), ping);
  EXPECT_EQ(lineOf("/sbin/pinger x"), "/sbin/pinger x");
  EXPECT_EQ(lineOf("echo /sbin/ping"), "echo /sbin/ping");
  EXPECT_EQ(lineOf(""), "");
}

}  // namespace
}  // namespace platform
