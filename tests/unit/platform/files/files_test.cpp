// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/files/files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <thread>

#include "support/environment.h"
#include "support/limit.h"
#include "support/refused_call.h"
#include "support/temporary_folder.h"

namespace platform {
namespace {

using support::contentsOf;
using support::ScopedVariable;
using support::TemporaryFolder;

std::size_t entryCount(const TemporaryFolder& folder) {
  return listFolder(folder.path()).size();
}

TEST(Files, WritesANewFile) {
  const TemporaryFolder folder;
  const std::string bytes("a\0b\xff", 4);
  EXPECT_TRUE(writeAtomically(folder.path("new \xff.txt"), {bytes}));
  EXPECT_EQ(contentsOf(folder.path("new \xff.txt")), bytes);
  EXPECT_EQ(entryCount(folder), 1U);
}

TEST(Files, GivesANewFileTheUsersPermissions) {
  const TemporaryFolder folder;
  const mode_t before = umask(027);
  EXPECT_TRUE(writeAtomically(folder.path("new"), {"x"}));
  EXPECT_EQ(umask(before), 027U);
  EXPECT_EQ(std::filesystem::status(folder.path("new")).permissions(),
            std::filesystem::perms(0640));
}

TEST(Files, ReplacesAFileAndKeepsItsPermissions) {
  const TemporaryFolder folder;
  const std::string path = folder.write("file", "old and longer");
  std::filesystem::permissions(path, std::filesystem::perms(0604));
  EXPECT_TRUE(writeAtomically(path, {"new"}));
  EXPECT_EQ(contentsOf(path), "new");
  EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(0604));
  EXPECT_EQ(entryCount(folder), 1U);
}

TEST(Files, MakesNothingThatRunsWithItsOwnersRights) {
  const TemporaryFolder folder;
  const std::string path = folder.write("file", "old");
  std::filesystem::permissions(path, std::filesystem::perms(06755));
  EXPECT_TRUE(writeAtomically(path, {"new"}));
  EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(0755));
}

TEST(Files, WritesThroughALink) {
  const TemporaryFolder folder;
  folder.write("file", "old");
  std::filesystem::create_symlink("file", folder.path("link"));
  EXPECT_TRUE(writeAtomically(folder.path("link"), {"new"}));
  EXPECT_EQ(contentsOf(folder.path("file")), "new");
  EXPECT_TRUE(std::filesystem::is_symlink(folder.path("link")));
}

TEST(Files, LeavesEverythingElseAlone) {
  const TemporaryFolder folder;
  std::filesystem::create_symlink("nowhere/file", folder.path("dangling"));
  std::filesystem::create_symlink("loop", folder.path("loop"));
  std::filesystem::create_directory(folder.path("folder"));
  ASSERT_EQ(mkfifo(folder.path("fifo").c_str(), 0600), 0);
  for (const std::string& path :
       {folder.path("folder"), folder.path("missing/file"), folder.path("fifo"),
        folder.path("new/"), std::string("/dev/null"), std::string("/dev/full"), std::string()}) {
    EXPECT_FALSE(writeAtomically(path, {"x"})) << path;
  }
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
  EXPECT_EQ(entryCount(folder), 4U);
}

// The exit status of a process that writes while the system refuses this call: 0 when it has not
// replaced the file. A death test would begin anew, with another folder.
int statusOfWriting(const std::string& path, long refused) {
  const pid_t pid = fork();
  if (pid == 0) {
    if (!support::refuseCall(refused, EIO)) {
      std::_Exit(2);
    }
    std::_Exit(writeAtomically(path, {"new"}) ? 1 : 0);
  }
  int status = -1;
  waitpid(pid, &status, 0);
  return status;
}

#ifdef SYS_newfstatat
// It might be a device, or a link.
TEST(Files, LeavesAloneWhatTheSystemCannotTellAbout) {
  const TemporaryFolder folder;
  const std::string path = folder.write("file", "old");
  EXPECT_EQ(statusOfWriting(path, SYS_newfstatat), 0);
  EXPECT_EQ(contentsOf(path), "old");
  EXPECT_EQ(entryCount(folder), 1U);
}
#endif

// What is not on the disk for certain does not replace what is.
TEST(Files, KeepsTheOldFileIfTheNewOneCannotBeFinished) {
  const TemporaryFolder folder;
  const std::string path = folder.write("file", "old");
  EXPECT_EQ(statusOfWriting(path, SYS_fsync), 0);
  EXPECT_EQ(contentsOf(path), "old");
  EXPECT_EQ(entryCount(folder), 1U);
}

TEST(Files, WritesWhereTheFileSystemKeepsNoModes) {
  const TemporaryFolder folder;
  const std::string path = folder.write("file", "old");
  EXPECT_NE(statusOfWriting(path, SYS_fchmod), 0);
  EXPECT_EQ(contentsOf(path), "new");
  EXPECT_EQ(std::filesystem::status(path).permissions(),
            std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

TEST(Files, AWriteThatFailsHalfWayLeavesTheOldFile) {
  const TemporaryFolder folder;
  const std::string path = folder.write("file", "old");
  {
    const support::Limit small(RLIMIT_FSIZE, 100'000);
    EXPECT_FALSE(writeAtomically(path, {std::string(200'000, 'x')}));
  }
  EXPECT_EQ(contentsOf(path), "old");
  EXPECT_EQ(entryCount(folder), 1U);
}

TEST(Files, ListsEveryEntryOfAFolder) {
  const TemporaryFolder folder;
  folder.write("file", "");
  folder.write(".hidden", "");
  folder.write("\xff", "");
  std::filesystem::create_directory(folder.path("folder"));
  std::filesystem::create_symlink("/nowhere", folder.path("link"));
  std::vector<std::string> names;
  for (const FolderEntry& entry : listFolder(folder.path())) {
    names.push_back(entry.name);
    EXPECT_GT(entry.createdNs, 0);
  }
  std::sort(names.begin(), names.end());
  EXPECT_EQ(names, (std::vector<std::string>{".hidden", "file", "folder", "link", "\xff"}));
  EXPECT_TRUE(listFolder(folder.path("missing")).empty());
  EXPECT_TRUE(listFolder(folder.path("file")).empty());
}

// Entries come and go while the folder is read, and at last the folder itself.
TEST(Files, ListAFolderThatChangesMeanwhile) {
  const TemporaryFolder outer;
  const std::string folder = outer.path("folder");
  std::filesystem::create_directory(folder);
  std::ofstream(folder + "/stays").close();
  std::atomic<bool> isGone = false;
  std::thread changes([&] {
    for (int round = 0; round < 300; ++round) {
      for (int i = 0; i < 20; ++i) {
        std::ofstream(folder + "/comes and goes " + std::to_string(i)).close();
      }
      for (int i = 0; i < 20; ++i) {
        std::filesystem::remove(folder + "/comes and goes " + std::to_string(i));
      }
    }
    std::filesystem::remove(folder + "/stays");
    std::filesystem::remove(folder);
    isGone = true;
  });
  bool wasSeen = true;
  while (!isGone) {
    const std::vector<FolderEntry> entries = listFolder(folder);
    const auto kept = std::count_if(entries.begin(), entries.end(),
                                    [](const FolderEntry& entry) { return entry.name == "stays"; });
    // Until the end of the folder begins, the one that nobody touches is there, and once.
    EXPECT_LE(kept, 1);
    EXPECT_TRUE(wasSeen || kept == 0);
    wasSeen = kept == 1;
  }
  changes.join();
  EXPECT_TRUE(listFolder(folder).empty());
}

TEST(Files, KnowWhetherAPathExists) {
  const TemporaryFolder folder;
  folder.write("file", "");
  EXPECT_TRUE(pathExists(folder.path()));
  EXPECT_TRUE(pathExists(folder.path("file")));
  EXPECT_FALSE(pathExists(folder.path("missing")));
  EXPECT_FALSE(pathExists(folder.path("file/below")));
}

// What is taken to be missing is left out of a run: a user has to hear that nobody could look.
TEST(Files, TellIfNobodyCanLookWhetherAPathExists) {
  const TemporaryFolder folder;
  std::filesystem::create_symlink("loop", folder.path("loop"));
  testing::internal::CaptureStderr();
  EXPECT_FALSE(pathExists(folder.path("missing")));
  EXPECT_FALSE(pathExists(folder.path("loop")));
  const std::string said = testing::internal::GetCapturedStderr();
  EXPECT_THAT(said,
              testing::HasSubstr("cannot tell whether " + folder.path("loop") + " is there: "));
  EXPECT_THAT(said, testing::Not(testing::HasSubstr("missing")));
}

TEST(Files, ExpandALeadingTilde) {
  const ScopedVariable home("HOME", "/home/somebody");
  const std::string root = getpwnam("root")->pw_dir;
  const std::vector<std::pair<std::string, std::string>> cases{
      {"~", "/home/somebody"},
      {"~/r.txt", "/home/somebody/r.txt"},
      {"~root", root},
      {"~root/r.txt", root + "/r.txt"},
      {"~nobody-has-this/x", "~nobody-has-this/x"},
      {"/a/~/b", "/a/~/b"},
      {"a~", "a~"},
      {"", ""},
  };
  for (const auto& [path, expanded] : cases) {
    EXPECT_EQ(expandTilde(path), expanded);
  }
}

TEST(Files, ExpandATildeWithoutAHomeVariable) {
  const ScopedVariable home("HOME", nullptr);
  EXPECT_EQ(expandTilde("~/x"), std::string(getpwuid(getuid())->pw_dir) + "/x");
}

class Desktop : public testing::Test {
 protected:
  void nameDesktop(const std::string& line) {
    std::filesystem::create_directories(home.path(".config"));
    home.write(".config/user-dirs.dirs", line);
  }

  TemporaryFolder home;
  ScopedVariable homeVariable{"HOME", home.path().c_str()};
  ScopedVariable configVariable{"XDG_CONFIG_HOME", nullptr};
};

TEST_F(Desktop, IsMadeInTheHomeFolder) {
  EXPECT_EQ(desktopFolder(), home.path("Desktop"));
  EXPECT_TRUE(std::filesystem::is_directory(home.path("Desktop")));
  EXPECT_EQ(desktopFolder(), home.path("Desktop"));
}

TEST_F(Desktop, IsTheOneThatTheDesktopEnvironmentNames) {
  nameDesktop("XDG_DESKTOP_DIR=\"$HOME/Schreibtisch/neu\"\n");
  EXPECT_EQ(desktopFolder(), home.path("Schreibtisch/neu"));
  EXPECT_TRUE(std::filesystem::is_directory(home.path("Schreibtisch/neu")));
}

TEST_F(Desktop, IsReadAsTheShellReadsIt) {
  nameDesktop(
      "# mine\n\n \tXDG_DESKTOP_DIR=\"/a\"\nXDG_DESKTOP_DIR=\"$HOME//a \\\"b\\\" \\$c \xFF\" # d\n"
      "XDG_DESKTOP_DIRS=\"/e\"\n");
  EXPECT_EQ(desktopFolder(), home.path("a \"b\" $c \xFF"));
}

TEST_F(Desktop, IsNamedInTheFolderForSettings) {
  nameDesktop("XDG_DESKTOP_DIR=\"$HOME/here\"\n");
  for (const char* place : {"", "relative"}) {
    const ScopedVariable none("XDG_CONFIG_HOME", place);
    EXPECT_EQ(desktopFolder(), home.path("here")) << place;
  }
  home.write("user-dirs.dirs", "XDG_DESKTOP_DIR=\"$HOME/there\"\n");
  const ScopedVariable other("XDG_CONFIG_HOME", home.path().c_str());
  EXPECT_EQ(desktopFolder(), home.path("there"));
}

TEST_F(Desktop, IsNotTheHomeFolderItself) {
  for (const char* line : {"XDG_DESKTOP_DIR=\"$HOME/\"\n", "XDG_DESKTOP_DIR=\"$HOME\"\n"}) {
    nameDesktop(line);
    EXPECT_EQ(desktopFolder(), home.path("Desktop")) << line;
  }
}

TEST_F(Desktop, IsTheUsualOneWhereTheNamedOneCannotBe) {
  nameDesktop("XDG_DESKTOP_DIR=\"/proc/none/Desktop\"\n");
  EXPECT_EQ(desktopFolder(), home.path("Desktop"));
}

TEST_F(Desktop, IsNoRelativePath) {
  for (const char* line : {"XDG_DESKTOP_DIR=\"\"\n", "XDG_DESKTOP_DIR=\"here\"\n"}) {
    nameDesktop(line);
    EXPECT_EQ(desktopFolder(), home.path("Desktop")) << line;
  }
}

TEST_F(Desktop, IsNowhereWhereNothingCanBeWritten) {
  home.write("Desktop", "a file");
  for (const std::string& unusable : {std::string("/nowhere/at/all"), home.path()}) {
    const ScopedVariable nowhere("HOME", unusable.c_str());
    EXPECT_EQ(desktopFolder(), "");
  }
}

TEST(TemporaryPlace, IsANewPrivateFolder) {
  const TemporaryFolder temporary;
  const ScopedVariable place("TMPDIR", temporary.path().c_str());
  const std::string folder = temporaryFolder();
  EXPECT_TRUE(folder.starts_with(temporary.path("halvik-diagnostic-"))) << folder;
  EXPECT_EQ(std::filesystem::status(folder).permissions(), std::filesystem::perms(0700));
  EXPECT_NE(temporaryFolder(), folder);
}

// Even to root, nothing can be made in this one.
TEST(TemporaryPlace, IsElsewhereWhereTheNamedOneCannotBeUsed) {
  const ScopedVariable place("TMPDIR", "/proc");
  const std::string folder = temporaryFolder();
  ASSERT_TRUE(folder.starts_with("/tmp/halvik-diagnostic-")) << folder;
  EXPECT_EQ(std::filesystem::status(folder).permissions(), std::filesystem::perms(0700));
  EXPECT_TRUE(std::filesystem::remove(folder));
}

#ifdef SYS_mkdir
[[noreturn]] void exitWithWhetherItIsMissing() {
  if (!support::refuseCall(SYS_mkdir, ENOSPC)) {
    std::_Exit(2);
  }
  std::_Exit(std::filesystem::exists(temporaryFolder()) ? 1 : 0);
}

// The place for temporary files itself would show the report to everybody.
TEST(TemporaryPlaceDeathTest, IsNoFolderOfEverybodysWhereNoneCanBeMade) {
  EXPECT_EXIT(exitWithWhetherItIsMissing(), testing::ExitedWithCode(0), "");
}
#endif

}  // namespace
}  // namespace platform
