// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/files/desktop_setting.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "support/environment.h"
#include "support/temporary_folder.h"

namespace platform {
namespace {

class DesktopSettingTest : public testing::Test {
 protected:
  std::filesystem::path settingFor(const std::string& settings) {
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

TEST_F(DesktopSettingTest, StaysInTheHomeFolderHoweverManySlashesFollow) {
  EXPECT_EQ(settingFor("XDG_DESKTOP_DIR=\"$HOME//desk\"").lexically_normal(), "/home/me/desk");
  EXPECT_EQ(settingFor("XDG_DESKTOP_DIR=\"$HOME///desk\"").lexically_normal(), "/home/me/desk");
}

TEST_F(DesktopSettingTest, IsReadAsTheShellReadsIt) {
  EXPECT_EQ(settingFor("XDG_DESKTOP_DIR=\"/a\"\nXDG_DESKTOP_DIR=\"/b\"\n"), "/b");
  EXPECT_EQ(settingFor(R"(XDG_DESKTOP_DIR="$HOME/a \"b\" \$c \\\xE9")"
                       "\n"),
            "/home/me/a \"b\" $c \\xE9");
  EXPECT_EQ(settingFor("XDG_DESKTOP_DIR=\"/bytes \xFF\""), "/bytes \xFF");
  EXPECT_EQ(settingFor("XDG_DESKTOP_DIR=\"\\$HOME/desk\""), "$HOME/desk");
  EXPECT_EQ(settingFor(" \tXDG_DESKTOP_DIR=\"/a b\" # mine\r\n"), "/a b");
}

TEST_F(DesktopSettingTest, NeedsNoQuotes) {
  EXPECT_EQ(settingFor("XDG_DESKTOP_DIR=$HOME/desk\n"), "/home/me/desk");
  EXPECT_EQ(settingFor("XDG_DESKTOP_DIR=$HOME\r\n"), "/home/me");
  EXPECT_EQ(settingFor("XDG_DESKTOP_DIR=/my\\ desk # mine\n"), "/my desk");
  EXPECT_EQ(settingFor("XDG_DESKTOP_DIR='/desk'\n"), "'/desk'");
}

TEST_F(DesktopSettingTest, EndsAtANul) {
  EXPECT_EQ(settingFor(std::string("XDG_DESKTOP_DIR=\"/a\0b\"\n", 23)), "/a");
}

// It is asked for when a report is to be saved, which must not wait for it.
TEST_F(DesktopSettingTest, IsNoneWhereTheSettingsAreNoShortFile) {
  const std::string path = home.path(".config/user-dirs.dirs");
  settingFor("XDG_DESKTOP_DIR=\"/a\"\n");
  std::filesystem::resize_file(path, 1024UL * 1024);
  EXPECT_EQ(desktopSetting("/home/me"), "/a");
  std::filesystem::resize_file(path, 1024UL * 1024 + 1);
  EXPECT_EQ(desktopSetting("/home/me"), "");
  std::filesystem::remove(path);
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  EXPECT_EQ(desktopSetting("/home/me"), "");
  std::filesystem::remove(path);
  std::filesystem::create_symlink("/dev/zero", path);
  EXPECT_EQ(desktopSetting("/home/me"), "");
  std::filesystem::remove(path);
  std::filesystem::create_directory(path);
  EXPECT_EQ(desktopSetting("/home/me"), "");
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
