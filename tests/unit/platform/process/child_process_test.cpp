// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/process/child_process.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <system_error>

#include "support/descriptors.h"
#include "support/event_loop.h"
#include "support/held_call.h"
#include "support/limit.h"
#include "support/refused_call.h"
#include "support/temporary_folder.h"

namespace platform {
namespace {

using support::openDescriptors;
using Stream = ChildProcess::Stream;

// A command with its handlers counted.
class Started {
 public:
  Started(const std::string& path, const std::vector<std::string>& args)
      : child(support::eventLoop(), path, args) {
    child.waitForData(Stream::output, [this](std::string_view data) {
      ++dataEvents;
      output.append(data);
    });
    child.waitForData(Stream::error, [this](std::string_view data) { error.append(data); });
  }

  void launch() {
    child.launch([this] { ended = true; });
  }

  void run() {
    launch();
    support::turnUntil([this] { return ended; });
    child.readToEnd(output, error);
  }

  ChildProcess child;
  ByteBuffer output;
  ByteBuffer error;
  bool ended = false;
  int dataEvents = 0;
};

class Shell : public Started {
 public:
  explicit Shell(const std::string& line) : Started("/bin/sh", {"-c", line}) {}
};

std::string outputOf(const std::string& line) {
  Shell shell(line);
  shell.run();
  return std::string(shell.output.view());
}

TEST(ChildProcess, IsReadWhileItRuns) {
  const support::TemporaryFolder folder;
  Shell shell("echo early; while [ ! -e " + folder.path("go") + " ]; do :; done; echo late");
  shell.launch();
  support::turnUntil([&] { return shell.output.view() == "early\n"; });
  EXPECT_FALSE(shell.ended);
  folder.write("go", "");
  support::turnUntil([&] { return shell.ended; });
  shell.child.readToEnd(shell.output, shell.error);
  EXPECT_EQ(shell.output.view(), "early\nlate\n");
}

TEST(ChildProcess, IsNotAskedForMoreAfterTheEndOfAStream) {
  Shell shell("exec >&-; exec 2>&-; exec sleep 1000");
  shell.launch();
  support::turnUntil([&] { return shell.dataEvents == 1; });
  // The descriptor is closed by now; a watch that had stayed would fire on every turn.
  for (int i = 0; i < 10; ++i) {
    support::eventLoop().post([] {});
    support::turn();
  }
  EXPECT_EQ(shell.dataEvents, 1);
  EXPECT_FALSE(shell.ended);
}

TEST(ChildProcess, InheritsInputEnvironmentAndFolder) {
  EXPECT_EQ(outputOf("pwd"), std::filesystem::current_path().string() + '\n');
  setenv("HALVIK_TEST_VARIABLE", "a value", 1);
  EXPECT_EQ(outputOf("echo \"$HALVIK_TEST_VARIABLE\""), "a value\n");
  unsetenv("HALVIK_TEST_VARIABLE");

  std::array<int, 2> ends;
  ASSERT_EQ(pipe(ends.data()), 0);
  const int before = dup(STDIN_FILENO);
  dup2(ends[0], STDIN_FILENO);
  ASSERT_EQ(write(ends[1], "typed\n", 6), 6);
  EXPECT_EQ(outputOf("read line; echo \"$line\""), "typed\n");
  dup2(before, STDIN_FILENO);
  for (const int fd : {ends[0], ends[1], before}) {
    close(fd);
  }
}

// The shell lists its own folder without another process; the fourth is the one that it lists with.
const std::string listDescriptors = "cd /proc/self/fd && echo [0-9]*";

TEST(ChildProcess, HasOnlyTheThreeStandardDescriptors) {
  const Shell sibling(":");
  EXPECT_EQ(outputOf(listDescriptors), "0 1 2 3\n");
}

// In a process of its own, in which nothing has been launched yet.
TEST(ChildProcessDeathTest, HasNothingThatTheProgramWasStartedWith) {
  EXPECT_EXIT(
      {
        const int low = dup(STDIN_FILENO);
        const bool given = low > 2 && dup2(low, 333) == 333;
        const bool unseen = outputOf(listDescriptors) == "0 1 2 3\n";
        std::_Exit(given && unseen ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

TEST(ChildProcess, WritesToItsPipesWhateverTheirNumbers) {
  outputOf(":");
  std::vector<std::unique_ptr<Shell>> shells;
  for (int i = 0; i < 50; ++i) {
    shells.push_back(std::make_unique<Shell>("echo " + std::to_string(i) + "; echo e >&2"));
  }
  for (std::size_t i = 0; i < shells.size(); ++i) {
    shells[i]->run();
    EXPECT_EQ(shells[i]->output.view(), std::to_string(i) + '\n');
    EXPECT_EQ(shells[i]->error.view(), "e\n");
  }
}

TEST(ChildProcess, HasDefaultSignals) {
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  const auto oldTerm = std::signal(SIGTERM, SIG_IGN);
  const auto oldPipe = std::signal(SIGPIPE, SIG_IGN);
  sigprocmask(SIG_SETMASK, &all, &before);
  // Not through a shell, which would unblock signals itself.
  Started grep("/bin/grep", {"-E", "^Sig(Blk|Ign)", "/proc/self/status"});
  grep.run();
  const std::string masks(grep.output.view());
  const std::string pipeline = outputOf("yes | head -1");
  sigprocmask(SIG_SETMASK, &before, nullptr);
  std::signal(SIGTERM, oldTerm);
  std::signal(SIGPIPE, oldPipe);
  EXPECT_NE(masks.find("SigBlk:\t0000000000000000\n"), std::string::npos) << masks;
  // Signals 32 and 33 belong to the C library, which never gives them back.
  const std::uint64_t ofTheLibrary = 0b11ULL << 31U;
  EXPECT_EQ(std::stoull(masks.substr(masks.find("SigIgn:") + 7), nullptr, 16) & ~ofTheLibrary, 0U)
      << masks;
  EXPECT_EQ(pipeline, "y\n");
}

TEST(ChildProcess, IgnoresWhatItsTerminalSendsWhereTheProgramDoes) {
  for (const int signal : {SIGHUP, SIGINT, SIGQUIT}) {
    struct sigaction before{};
    struct sigaction ignored{};
    ignored.sa_handler = SIG_IGN;
    sigaction(signal, &ignored, &before);
    Shell shell("kill -" + std::to_string(signal) + " $$; echo on");
    shell.run();
    sigaction(signal, &before, nullptr);
    EXPECT_EQ(shell.output.view(), "on\n") << signal;
  }
}

TEST(ChildProcess, LeavesNothingBehind) {
  outputOf(":");
  const std::size_t before = support::openDescriptors();
  for (int i = 0; i < 20; ++i) {
    const pid_t pid = std::stoi(outputOf("echo $$; echo y >&2"));
    EXPECT_EQ(waitpid(pid, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
  }
  EXPECT_EQ(support::openDescriptors(), before);
}

TEST(ChildProcess, ThatCannotBeLaunchedLeavesNothingBehind) {
  outputOf(":");
  const std::size_t before = support::openDescriptors();
  {
    ChildProcess child(support::eventLoop(), "/no/such/tool", {});
    EXPECT_THROW(child.launch([] {}), std::system_error);
  }
  EXPECT_EQ(support::openDescriptors(), before);
}

// Nor is it there for its owner to collect.
TEST(ChildProcessDeathTest, ThatCannotBeLaunchedIsNoChild) {
  EXPECT_EXIT(
      {
        ChildProcess child(support::eventLoop(), "/no/such/tool", {});
        try {
          child.launch([] {});
        } catch (const std::system_error&) {
          std::_Exit(waitpid(-1, nullptr, WNOHANG) < 0 && errno == ECHILD ? 0 : 1);
        }
      },
      testing::ExitedWithCode(0), "");
}

TEST(ChildProcess, ThatHasBeenCollectedIsSentNothing) {
  Shell shell(":");
  shell.run();
  // Its number may be a stranger's by now. That of nobody is an error.
  errno = 0;
  shell.child.terminate();
  EXPECT_EQ(errno, 0);
}

// A process that is sent a signal in the middle of a launch. Of its end the command is to hear from
// nobody else.
[[noreturn]] void launchWhileASignalComes() {
  const pthread_t launching = pthread_self();
  if (!support::holdCall(SYS_execve, [=](pid_t) { pthread_kill(launching, SIGTERM); }) ||
      !support::refuseCall(SYS_prctl, 0)) {
    std::_Exit(2);
  }
  ChildProcess child(support::eventLoop(), "/bin/sleep", {"1000"});
  child.launch([] {});
  std::_Exit(3);
}

TEST(ChildProcess, IsAskedToEndByASignalThatCameDuringItsLaunch) {
  std::array<int, 2> ends;
  ASSERT_EQ(pipe(ends.data()), 0);
  const pid_t pid = fork();
  if (pid == 0) {
    // The one descriptor of ours that a command has, so that somebody holds it until both have
    // ended.
    dup2(ends[1], STDIN_FILENO);
    close(ends[1]);
    launchWhileASignalComes();
  }
  close(ends[1]);
  int status = 0;
  waitpid(pid, &status, 0);
  EXPECT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(WTERMSIG(status), SIGTERM);
  constexpr int guardMilliseconds = 60'000;
  pollfd wait{.fd = ends[0], .events = POLLIN, .revents = 0};
  EXPECT_EQ(poll(&wait, 1, guardMilliseconds), 1);
  close(ends[0]);
}

TEST(ChildProcess, ThatStillRunsIsAskedToEndWithItsOwner) {
  pid_t pid = 0;
  {
    Shell shell("trap 'exit 7' TERM; echo $$; while :; do :; done");
    shell.launch();
    support::turnUntil([&] { return shell.output.view().ends_with('\n'); });
    pid = std::stoi(std::string(shell.output.view()));
  }
  int status = 0;
  ASSERT_EQ(waitpid(pid, &status, 0), pid);
  EXPECT_EQ(WEXITSTATUS(status), 7);
}

TEST(ChildProcess, ThatIsStoppedEndsWithItsOwnerToo) {
  pid_t pid = 0;
  {
    Shell shell("echo $$; kill -STOP $$; exec sleep 1000");
    shell.launch();
    support::turnUntil([&] { return shell.output.view().ends_with('\n'); });
    pid = std::stoi(std::string(shell.output.view()));
    siginfo_t facts{};
    waitid(P_PID, static_cast<id_t>(pid), &facts, WSTOPPED | WNOWAIT);
  }
  int status = 0;
  ASSERT_EQ(waitpid(pid, &status, 0), pid);
  EXPECT_EQ(WTERMSIG(status), SIGTERM);
}

TEST(ChildProcess, FailsWithAReasonWhenThereAreNoDescriptorsLeft) {
#ifdef HALVIK_SANITIZE
  GTEST_SKIP() << "the sanitizer needs descriptors of its own to look at an exception";
#endif
  std::string reason;
  const support::Limit none(RLIMIT_NOFILE, 3);
  try {
    const ChildProcess child(support::eventLoop(), "/bin/true", {});
  } catch (const std::system_error& error) {
    reason = error.what();
  }
  EXPECT_EQ(reason, "cannot run /bin/true: Too many open files");
}

TEST(ChildProcess, IsReadToTheEndOfTheStreamThatEndsLast) {
  // What holds the second stream waits until the command itself has been reaped.
  Shell shell("(exec >&-; while kill -0 $$ 2>/dev/null; do :; done; echo late >&2) & echo early");
  shell.run();
  EXPECT_EQ(shell.output.view(), "early\n");
  EXPECT_EQ(shell.error.view(), "late\n");
}

TEST(ChildProcess, IsOneOfAThousandAtOnce) {
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  if (limit.rlim_cur < 5000) {
    GTEST_SKIP() << "this machine does not allow for enough descriptors";
  }
  // None of them is reaped before the last one has been launched.
  std::vector<std::unique_ptr<Shell>> shells;
  for (int i = 0; i < 1025; ++i) {
    shells.push_back(std::make_unique<Shell>("echo " + std::to_string(i)));
    shells.back()->launch();
  }
  for (int i = 0; i < 1025; ++i) {
    Shell& shell = *shells[static_cast<std::size_t>(i)];
    support::turnUntil([&] { return shell.ended; });
    shell.child.readToEnd(shell.output, shell.error);
    ASSERT_EQ(shell.output.view(), std::to_string(i) + '\n');
  }
}

TEST(ChildProcess, ReadsMoreThanAPipeHolds) {
  Shell shell("head -c 5000000 /dev/zero; head -c 3000000 /dev/zero >&2");
  shell.run();
  EXPECT_EQ(shell.output.view(), std::string(5'000'000, '\0'));
  EXPECT_EQ(shell.error.view(), std::string(3'000'000, '\0'));
}

}  // namespace
}  // namespace platform
