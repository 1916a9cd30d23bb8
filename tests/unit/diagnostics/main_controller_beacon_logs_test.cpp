// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "platform/files/files.h"
#include "support/process_controller.h"
#include "support/temporary_folder.h"

namespace app {
namespace {

std::int64_t createdNs(const std::string& folder, const std::string& name) {
  for (const platform::FolderEntry& entry : platform::listFolder(folder)) {
    if (entry.name == name) {
      return entry.createdNs;
    }
  }
  return 0;
}

// Creates entries of strictly growing age, whatever the clock of the file system: an entry that is
// as old as the one before it is made again.
class LogFolder {
 public:
  template <class Make>
  void add(const std::string& name, Make make) {
    do {
      std::filesystem::remove_all(folder.path(name));
      make(folder.path(name));
    } while (createdNs(folder.path(), name) <= newest);
    newest = createdNs(folder.path(), name);
  }

  void addFile(const std::string& name, const std::string& bytes) {
    add(name, [&](const std::string& path) { std::ofstream(path) << bytes; });
  }

  std::string path() const { return folder.path() + '/'; }

 private:
  support::TemporaryFolder folder;
  std::int64_t newest = 0;
};

std::vector<std::string> readers(const support::RecordingController& controller) {
  std::vector<std::string> lines;
  for (const support::PlannedTest& test : controller.planned) {
    EXPECT_EQ(test.launchPath, "/bin/sh");
    EXPECT_EQ(test.args.size(), 2U);
    EXPECT_EQ(test.args.front(), "-c");
    EXPECT_EQ(test.comment, std::nullopt);
    lines.push_back(test.args.back());
  }
  return lines;
}

TEST(BeaconLogRun, EveryEntryGetsAReaderTheOldestFirst) {
  LogFolder logs;
  logs.addFile("10:00", "");
  logs.addFile(".hidden", "");
  logs.add("a folder", [](const std::string& path) { std::filesystem::create_directory(path); });
  logs.addFile("\xff\xfe", "");
  logs.add("link",
           [](const std::string& path) { std::filesystem::create_symlink("/nowhere", path); });
  logs.addFile("09:00", "");
  support::RecordingController controller;
  controller.tailBeaconSubfolderLog(logs.path());
  const std::string start = "cat \"" + logs.path();
  EXPECT_THAT(readers(controller),
              testing::ElementsAre(start + "10:00\"", start + ".hidden\"", start + "a folder\"",
                                   start + "\xff\xfe\"", start + "link\"", start + "09:00\""));
}

TEST(BeaconLogRun, AFolderThatIsMissingOrIsNoneHasNoReaders) {
  const support::TemporaryFolder folder;
  folder.write("file", "");
  support::RecordingController controller;
  controller.tailBeaconSubfolderLog(folder.path("missing/"));
  controller.tailBeaconSubfolderLog(folder.path("file/"));
  EXPECT_TRUE(controller.planned.empty());
}

TEST(BeaconLogRun, OddEntriesSpoilNoResultButTheirOwn) {
  LogFolder logs;
  logs.addFile("with blank", "blank\n");
  logs.addFile("quo\"te", "lost\n");
  logs.add("folder", [](const std::string& path) { std::filesystem::create_directory(path); });
  logs.addFile("empty", "");
  logs.addFile("\xff", "bytes\n");
  logs.addFile("last", "end\n");
  MainController controller(support::eventLoop());
  controller.isSilent = controller.isConsole = true;
  // A command that never ends keeps the run from being delivered, which would end this process.
  controller.startTest("/bin/sh", {"-c", "exec tail -f /dev/null"});
  controller.tailBeaconSubfolderLog(logs.path());
  support::turnUntil([&] { return controller.finishedTasksCount() == 6; });
  std::vector<std::string> results;
  for (const auto& process : controller.processes) {
    results.push_back(process->getResult());
  }
  using testing::HasSubstr;
  EXPECT_THAT(results[1], HasSubstr("with blank\"\nstdout:\nblank\n\n"));
  EXPECT_THAT(results[2], HasSubstr("stderr:\n"));
  EXPECT_THAT(results[3], HasSubstr("folder\"\nstderr:\ncat: "));
  EXPECT_TRUE(results[4].ends_with("empty\"\n"));
  EXPECT_THAT(results[5], HasSubstr("/\xEF\xBF\xBD\"\nstdout:\nbytes\n\n"));
  EXPECT_THAT(results[6], HasSubstr("last\"\nstdout:\nend\n\n"));
}

TEST(BeaconLogRun, FiveThousandLogsAreReadAtOnce) {
  const support::TemporaryFolder folder;
  for (int i = 0; i < 5000; ++i) {
    folder.write(std::to_string(i), "log " + std::to_string(i) + '\n');
  }
  MainController controller(support::eventLoop());
  controller.startTest("/bin/sh", {"-c", "exec tail -f /dev/null"});
  controller.tailBeaconSubfolderLog(folder.path() + '/');
  support::turnUntil([&] { return controller.finishedTasksCount() == 5000; });
  controller.buildResults();
  const std::string results = text::join(controller.results);
  // One way through the text, as looking for each in the whole takes longer than all else.
  std::set<int> found;
  for (std::size_t at = 0; (at = results.find("\"\nstdout:\nlog ", at)) != std::string::npos;
       ++at) {
    const std::size_t slash = results.rfind('/', at);
    const std::string number = results.substr(slash + 1, at - slash - 1);
    const std::string block = "\"\nstdout:\nlog " + number + "\n\n";
    ASSERT_EQ(results.substr(at, block.size()), block);
    found.insert(std::stoi(number));
  }
  EXPECT_EQ(found.size(), 5000U);
  EXPECT_EQ(*found.begin(), 0);
  EXPECT_EQ(*found.rbegin(), 4999);
}

}  // namespace
}  // namespace app
