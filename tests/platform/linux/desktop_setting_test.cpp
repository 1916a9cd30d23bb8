// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/desktop_setting.h"

#include <gtest/gtest.h>

#include <string>

#include "support/environment.h"
#include "support/temporary_folder.h"

namespace platform {
namespace {

class DesktopSettingTest : public testing::Test {
 protected:
  std::string settingFor(const std::string& settings) {
    std::filesystem::create_directory(home.path(".config"));
    home.write(".config/user-dirs.dirs", settings);
    return desktopSetting("/home/me");
  }

  support::TemporaryFolder home;
  support::ScopedVariable config{"XDG_CONFIG_HOME", home.path(".config").c_str()};
};

TEST_F(DesktopSettingTest, IsNoneWithoutASetting) {
  EXPECT_EQ(desktopSetting("/home/me"), "");
  EXPECT_EQ(settingFor(""), "");
  EXPECT_EQ(settingFor("# XDG_DESKTOP_DIR=\"/a\"\nXDG_DOWNLOAD_DIR=\"/b\"\n"), "");
  EXPECT_EQ(settingFor("XDG_DESKTOP_DIR=\nXDG_DESKTOP_DIR"), "");
  EXPECT_EQ(settingFor("XDG_DESKTOP_DIR=\""), "");
}

TEST_F(DesktopSettingTest, IsInTheHomeFolderOrAnywhere) {
  EXPECT_EQ(settingFor("XDG_DESKTOP_DIR=\"$HOME/My desk\"\n"), "/home/me/My desk");
  EXPECT_EQ(settingFor("XDG_DESKTOP_DIR=\"$HOME\""), "/home/me");
  EXPECT_EQ(settingFor("XDG_DESKTOP_DIR=\"/mnt/desk\""), "/mnt/desk");
  EXPECT_EQ(settingFor("XDG_DESKTOP_DIR=\"$HOMES/desk\""), "$HOMES/desk");
}

TEST_F(DesktopSettingTest, IsReadAsTheShellReadsIt) {
  EXPECT_EQ(settingFor("XDG_DESKTOP_DIR=\"/a\"\nXDG_DESKTOP_DIR=\"/b\"\n"), "/b");
  EXPECT_EQ(settingFor(R"(XDG_DESKTOP_DIR="$HOME/a \"b\" \$c \\\xE9")"
                       "\n"),
            "/home/me/a \"b\" $c \\xE9");
  EXPECT_EQ(settingFor("XDG_DESKTOP_DIR=\"/bytes \xFF\""), "/bytes \xFF");
}

TEST_F(DesktopSettingTest, IsAmongTheSettingsOfTheHomeFolderUnlessAnotherPlaceIsNamed) {
  settingFor("XDG_DESKTOP_DIR=\"/a\"\n");
  for (const char* place : {static_cast<const char*>(nullptr), "", "relative"}) {
    const support::ScopedVariable none("XDG_CONFIG_HOME", place);
    EXPECT_EQ(desktopSetting(home.path()), "/a");
    EXPECT_EQ(desktopSetting("/home/me"), "");
  }
}

}  // namespace
}  // namespace platform
