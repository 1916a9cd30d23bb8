// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/ending_signals.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>

#include "support/temporary_folder.h"

namespace platform {
namespace {

using Children = std::array<EndedAlong, 3>;

constexpr std::array ending{SIGHUP, SIGINT, SIGTERM};

// Whether every child that a test has started has ended, also where a signal ended the process that
// had started it: each holds the writing end.
class Lifeline {
 public:
  Lifeline() { EXPECT_EQ(pipe(ends.data()), 0); }
  ~Lifeline() { close(ends[0]); }
  Lifeline(const Lifeline&) = delete;
  Lifeline& operator=(const Lifeline&) = delete;

  // A child that does nothing until a signal ends it.
  pid_t startSleeper() const {
    const pid_t pid = fork();
    if (pid == 0) {
      std::signal(SIGTERM, SIG_DFL);
      close(ends[0]);
      for (;;) {
        pause();
      }
    }
    return pid;
  }

  void waitForAllEnds() {
    close(ends[1]);
    char byte = 0;
    EXPECT_EQ(read(ends[0], &byte, 1), 0);
  }

 private:
  std::array<int, 2> ends{};
};

// How a process ends that does `work`. A death test would begin anew, with other children and
// files.
int statusAfter(const std::function<void()>& work) {
  const pid_t pid = fork();
  if (pid == 0) {
    catchEndingSignals();
    work();
    std::_Exit(EXIT_SUCCESS);
  }
  int status = 0;
  waitpid(pid, &status, 0);
  return status;
}

// The signal that ended a process with this status; 0 when none did.
int signalOf(int status) {
  return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
}

TEST(EndingSignals, EndTheProgramAndItsChildren) {
  for (const int signal : ending) {
    Lifeline lifeline;
    const int status = statusAfter([&] {
      Children children;
      for (EndedAlong& child : children) {
        child.begin(lifeline.startSleeper());
      }
      raise(signal);
    });
    EXPECT_EQ(signalOf(status), signal);
    lifeline.waitForAllEnds();
  }
}

TEST(EndingSignals, EndThemWhicheverThreadTheyCameTo) {
  Lifeline lifeline;
  const int status = statusAfter([&] {
    EndedAlong child;
    child.begin(lifeline.startSleeper());
    std::thread([] {
      pthread_kill(pthread_self(), SIGTERM);
      pause();
    }).join();
  });
  EXPECT_EQ(signalOf(status), SIGTERM);
  lifeline.waitForAllEnds();
}

// In any order, as the ends of commands come.
TEST(EndingSignals, LeaveThoseAloneThatHaveBeenCollected) {
  for (const std::size_t forgotten : {0U, 1U, 2U}) {
    const Lifeline lifeline;
    std::array<pid_t, 3> pids{};
    for (pid_t& pid : pids) {
      pid = lifeline.startSleeper();
    }
    const int status = statusAfter([&] {
      Children children;
      for (std::size_t i = 0; i < children.size(); ++i) {
        children.at(i).begin(pids.at(i));
      }
      children.at(forgotten).end();
      children.at(forgotten).end();
      raise(SIGTERM);
    });
    EXPECT_EQ(signalOf(status), SIGTERM);
    for (std::size_t i = 0; i < pids.size(); ++i) {
      if (i != forgotten) {
        EXPECT_EQ(waitpid(pids.at(i), nullptr, 0), pids.at(i));
      }
    }
    EXPECT_EQ(waitpid(pids.at(forgotten), nullptr, WNOHANG), 0);
    kill(pids.at(forgotten), SIGKILL);
    waitpid(pids.at(forgotten), nullptr, 0);
  }
}

TEST(EndingSignals, RemoveAFileThatIsHalfWritten) {
  const support::TemporaryFolder folder;
  const std::string half = folder.write("half", "text");
  const std::string whole = folder.write("whole", "text");
  const int status = statusAfter([&] {
    { const RemovedAlong written(whole.c_str()); }
    const RemovedAlong file(half.c_str());
    raise(SIGINT);
  });
  EXPECT_EQ(signalOf(status), SIGINT);
  EXPECT_NE(access(half.c_str(), F_OK), 0);
  EXPECT_EQ(access(whole.c_str(), F_OK), 0);
}

TEST(EndingSignals, StayIgnoredWhereTheProgramWasStartedToIgnoreThem) {
  const int status = statusAfter([] {
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGHUP, SIG_IGN);
    catchEndingSignals();
    raise(SIGHUP);
    std::_Exit(staysIgnored(SIGHUP) && !staysIgnored(SIGINT) ? 3 : 4);
  });
  EXPECT_EQ(signalOf(status), 0);
  EXPECT_EQ(WEXITSTATUS(status), 3);
}

TEST(EndingSignals, WaitWhileTheyAreHeld) {
  for (const int signal : ending) {
    const int status = statusAfter([&] {
      const EndingSignalsHeld held;
      raise(signal);
      sigset_t pending;
      sigpending(&pending);
      // Else the held one ends the process at the end of this.
      if (sigismember(&pending, signal) != 1) {
        std::_Exit(EXIT_FAILURE);
      }
    });
    EXPECT_EQ(signalOf(status), signal);
  }
}

TEST(EndingSignals, OnlyThoseOfATerminalStayIgnored) {
  for (const int signal : {SIGTERM, SIGUSR1, SIGPIPE}) {
    struct sigaction before {};
    struct sigaction ignored {};
    ignored.sa_handler = SIG_IGN;
    sigaction(signal, &ignored, &before);
    EXPECT_FALSE(staysIgnored(signal));
    sigaction(signal, &before, nullptr);
  }
}

}  // namespace
}  // namespace platform
