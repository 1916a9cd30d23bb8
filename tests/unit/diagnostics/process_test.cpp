// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "diagnostics/process.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <system_error>

#include "support/process_controller.h"
#include "support/temporary_folder.h"
#include "text/notification_center.h"

namespace diagnostics {
namespace {

using support::makeProcess;
using support::runShell;
using support::turnUntil;

const std::string hyphens(45, '-');

std::string headOf(const std::string& line) {
  return hyphens + "Results for: /bin/sh -c " + line + '\n';
}

// Makes a descendant wait until the command that started it has ended and been reaped.
const std::string untilParentIsGone = "while kill -0 $$ 2>/dev/null; do :; done; ";

TEST(Process, IsNamedByPathArgumentsAndComment) {
  using Args = std::vector<std::string>;
  struct Case {
    Args args;
    std::optional<std::string> comment;
    std::string name;
  };
  const std::vector<Case> cases{
      {{}, std::nullopt, "/bin/true"},
      {{"-rn"}, std::nullopt, "/bin/true -rn"},
      {{"a b", "'c\""}, std::nullopt, "/bin/true a b 'c\""},
      {{"x"}, "(london router)", "/bin/true x (london router)"},
      {{}, "", "/bin/true "},
      {{""}, std::nullopt, "/bin/true "},
      {{"\xff"}, std::nullopt, "/bin/true \xEF\xBF\xBD"},
  };
  for (const auto& [args, comment, name] : cases) {
    const auto process = makeProcess();
    process->start("/bin/true", args, comment);
    EXPECT_EQ(process->getResult(), hyphens + "Results for: " + name + '\n');
    turnUntil([&] { return process->isFinished(); });
    EXPECT_EQ(process->getResult(), hyphens + "Results for: " + name + '\n');
  }
}

TEST(Process, ShowsEachStreamThatPrintedAnything) {
  const std::vector<std::pair<std::string, std::string>> cases{
      {":", ""},
      {"echo out", "stdout:\nout\n\n"},
      {"printf out", "stdout:\nout\n"},
      {"echo err >&2", "stderr:\nerr\n\n"},
      {"echo err >&2; echo out", "stdout:\nout\n\nstderr:\nerr\n\n"},
      {"printf '\\n'", "stdout:\n\n\n"},
      {"printf '\\377'; echo err >&2", "stderr:\nerr\n\n"},
      {"printf 'caf\\303\\251 \\377' >&2; echo out", "stdout:\nout\n\n"},
      {"printf 'a\\000b'", "stdout:\n" + std::string("a\0b\n", 4)},
      {"printf '\\303\\251'", "stdout:\n\xC3\xA9\n"},
      {"printf '\\355\\240\\200'", ""},
      {"exit 3", ""},
      {"echo dying; kill -9 $$", "stdout:\ndying\n\n"},
  };
  for (const auto& [line, streams] : cases) {
    EXPECT_EQ(runShell(line)->getResult(), headOf(line) + streams);
  }
}

TEST(Process, HoldsNoStreamsBeforeItsEnd) {
  const auto process = makeProcess();
  EXPECT_EQ(process->getResult(), hyphens + "Results for: \n");
  process->start("/bin/sh", {"-c", "echo early; exec cat /dev/zero"}, std::nullopt);
  for (int turns = 0; turns < 5; ++turns) {
    support::turn();
  }
  EXPECT_FALSE(process->isFinished());
  EXPECT_EQ(process->getResult(),
            hyphens + "Results for: /bin/sh -c echo early; exec cat /dev/zero\n");
}

TEST(Process, AnnouncesItsEndOnceWithEverythingInPlace) {
  const auto process = makeProcess();
  int announced = 0;
  std::string result;
  text::NotificationCenter::defaultCenter().addObserver(ProcessTerminatedNotification,
                                                        process.get(), [&] {
                                                          ++announced;
                                                          EXPECT_TRUE(process->isFinished());
                                                          result = process->getResult();
                                                        });
  process->start("/bin/sh", {"-c", "echo out; echo err >&2"}, std::nullopt);
  EXPECT_EQ(announced, 0);
  turnUntil([&] { return announced > 0; });
  const auto another = runShell(":");
  EXPECT_EQ(announced, 1);
  EXPECT_THAT(result, testing::EndsWith("stdout:\nout\n\nstderr:\nerr\n\n"));
}

TEST(Process, AnnouncesItsEndUnderThisName) {
  const auto process = makeProcess();
  int announced = 0;
  text::NotificationCenter::defaultCenter().addObserver("ProcessTerminatedNotification",
                                                        process.get(), [&] { ++announced; });
  process->start("/bin/true", {}, std::nullopt);
  turnUntil([&] { return process->isFinished(); });
  EXPECT_EQ(announced, 1);
}

TEST(Process, IsNotEndedByTheEndOfAnothersCommand) {
  const auto process = makeProcess();
  process->start("/bin/true", {}, std::nullopt);
  const platform::ChildProcess other(support::eventLoop(), "/bin/true", {});
  EXPECT_THROW(process->terminatedNotification(other), std::logic_error);
  EXPECT_FALSE(process->isFinished());
}

TEST(Process, ThatCannotBeLaunchedThrowsItsPathAndTheReason) {
  const std::vector<std::pair<std::string, std::string>> cases{
      {"/no/such/tool", "No such file or directory"},
      {"/etc/passwd", "Permission denied"},
      {"/", "Permission denied"},
  };
  for (const auto& [path, reason] : cases) {
    const auto process = makeProcess();
    try {
      process->start(path, {"x"}, std::nullopt);
      FAIL() << path << " was launched";
    } catch (const std::system_error& error) {
      EXPECT_THAT(error.what(),
                  testing::AllOf(testing::HasSubstr(path), testing::HasSubstr(reason)));
    }
    EXPECT_FALSE(process->isFinished());
  }
}

TEST(Process, EndsItsCommandWhenAsked) {
  const auto process = makeProcess();
  process->terminate();
  process->start("/bin/sh", {"-c", "exec sleep 1000"}, std::nullopt);
  process->terminate();
  turnUntil([&] { return process->isFinished(); });
  process->terminate();
}

TEST(Process, KeepsWhatADescendantWritesAfterItsParentsEnd) {
  const auto process =
      runShell("echo first; (" + untilParentIsGone + "echo late; echo late2 >&2) &");
  EXPECT_THAT(process->getResult(),
              testing::HasSubstr("stdout:\nfirst\nlate\n\nstderr:\nlate2\n\n"));
}

TEST(Process, ReadsBothStreamsOfADescendantThatFillsTheSecondFirst) {
  const auto process = runShell("{ head -c 300000 /dev/zero >&2; echo done; } &");
  const report::ResultBlock block = process->resultBlock();
  EXPECT_EQ(block.standardOutput, "done\n");
  EXPECT_EQ(block.standardError.value_or("").size(), 300000U);
}

// Numbered lines, so that a lost, doubled or misplaced piece shows.
std::string numberedLines(const std::string& name, std::size_t bytesMin) {
  std::string text;
  for (int i = 0; text.size() < bytesMin; ++i) {
    text += name + ' ' + std::to_string(i) + '\n';
  }
  return text;
}

TEST(Process, FiveHundredTalkativeCommandsLoseNothing) {
  constexpr std::size_t size = 1'000'000;
  const std::string expected = numberedLines("line", size);
  // Both streams at once in small pieces, and a descendant that writes at last: it waits for a pipe
  // that closes with its parent.
  const support::TemporaryFolder folder;
  folder.write("lines", expected);
  const std::string fifo = folder.path("$$");
  const std::string print = "dd bs=4096 status=none if=" + folder.path("lines");
  const std::string line = "mkfifo " + fifo + "; (read x < " + fifo + "; echo last) & exec 9> " +
                           fifo + "; " + print + " & a=$!; " + print + " >&2 & wait $a $!";
  std::vector<std::shared_ptr<Process>> processes;
  for (int i = 0; i < 500; ++i) {
    processes.push_back(makeProcess());
    processes.back()->start("/bin/sh", {"-c", line}, std::nullopt);
  }
  for (const auto& process : processes) {
    turnUntil([&] { return process->isFinished(); });
    const report::ResultBlock block = process->resultBlock();
    ASSERT_TRUE(block.standardOutput == expected + "last\n");
    ASSERT_TRUE(block.standardError == expected);
  }
}

TEST(ProcessList, CountsWhatHasFinished) {
  ProcessList list;
  EXPECT_EQ(list.size(), 0U);
  EXPECT_EQ(list.finishedCount(), 0U);
  const auto waits = support::makeProcess();
  const auto ends = support::makeProcess();
  list.append(waits);
  list.append(ends);
  std::uint32_t whenAnnounced = 0;
  text::NotificationCenter::defaultCenter().addObserver(
      ProcessTerminatedNotification, ends.get(), [&] { whenAnnounced = list.finishedCount(); });
  waits->start("/bin/sh", {"-c", "exec tail -f /dev/null"}, std::nullopt);
  ends->start("/bin/true", {}, std::nullopt);
  EXPECT_EQ(list.finishedCount(), 0U);
  support::turnUntil([&] { return ends->isFinished(); });
  EXPECT_EQ(list.finishedCount(), 1U);
  EXPECT_EQ(whenAnnounced, 1U);
}

TEST(ProcessList, ACopyStaysWithItsRun) {
  ProcessList list;
  const auto process = support::makeProcess();
  list.append(process);
  const ProcessList archived = list;
  list = ProcessList();
  process->start("/bin/true", {}, std::nullopt);
  support::turnUntil([&] { return process->isFinished(); });
  EXPECT_EQ(archived.size(), 1U);
  EXPECT_EQ(archived.finishedCount(), 1U);
  EXPECT_EQ(list.finishedCount(), 0U);
}

}  // namespace
}  // namespace diagnostics
