// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/process/termination_signals.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>
#include <tuple>

#include "support/temporary_folder.h"

namespace platform {
namespace {

constexpr std::array ending{SIGABRT, SIGHUP, SIGINT, SIGTERM};

// Ends what hangs; no test waits for it otherwise.
constexpr int guardSeconds = 60;

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
      alarm(2 * guardSeconds);
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
    pollfd wait{.fd = ends[0], .events = POLLIN, .revents = 0};
    EXPECT_EQ(poll(&wait, 1, guardSeconds * 1000), 1);
    EXPECT_EQ(wait.revents, POLLHUP);
  }

 private:
  std::array<int, 2> ends{};
};

// How a process ends that does `work`. A death test would begin anew, with other children and
// files.
int statusAfter(const std::function<void()>& work) {
  const pid_t pid = fork();
  if (pid == 0) {
    alarm(guardSeconds);
    handleTerminationSignals();
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
      for (int i = 0; i < 3; ++i) {
        addChild(lifeline.startSleeper());
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
    addChild(lifeline.startSleeper());
    std::thread([] {
      pthread_kill(pthread_self(), SIGTERM);
      pause();
    }).join();
  });
  EXPECT_EQ(signalOf(status), SIGTERM);
  lifeline.waitForAllEnds();
}

TEST(EndingSignals, LeaveThoseAloneThatHaveBeenCollected) {
  const Lifeline lifeline;
  std::array<pid_t, 3> pids{};
  for (pid_t& pid : pids) {
    pid = lifeline.startSleeper();
  }
  const int status = statusAfter([&] {
    for (const pid_t pid : pids) {
      addChild(pid);
    }
    removeChild(pids[1]);
    removeChild(pids[1]);
    raise(SIGTERM);
  });
  EXPECT_EQ(signalOf(status), SIGTERM);
  EXPECT_EQ(waitpid(pids[0], nullptr, 0), pids[0]);
  EXPECT_EQ(waitpid(pids[2], nullptr, 0), pids[2]);
  EXPECT_EQ(waitpid(pids[1], nullptr, WNOHANG), 0);
  kill(pids[1], SIGKILL);
  waitpid(pids[1], nullptr, 0);
}

TEST(EndingSignals, RemoveAFileThatIsHalfWritten) {
  const support::TemporaryFolder folder;
  const std::string half = folder.write("half", "text");
  const std::string whole = folder.write("whole", "text");
  const int status = statusAfter([&] {
    {
      const FileCleanup written(whole.c_str());
    }
    const FileCleanup file(half.c_str());
    raise(SIGINT);
  });
  EXPECT_EQ(signalOf(status), SIGINT);
  EXPECT_NE(access(half.c_str(), F_OK), 0);
  EXPECT_EQ(access(whole.c_str(), F_OK), 0);
}

TEST(EndingSignals, KeepAFileThatIsWholeByNow) {
  const support::TemporaryFolder folder;
  const std::string whole = folder.write("whole", "text");
  const int status = statusAfter([&] {
    {
      const FileCleanup written(whole.c_str());
    }
    raise(SIGINT);
  });
  EXPECT_EQ(signalOf(status), SIGINT);
  EXPECT_EQ(access(whole.c_str(), F_OK), 0);
}

TEST(EndingSignals, StayIgnoredWhereTheProgramWasStartedToIgnoreThem) {
  const int status = statusAfter([] {
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGHUP, SIG_IGN);
    handleTerminationSignals();
    raise(SIGHUP);
    std::_Exit(staysIgnored(SIGHUP) && !staysIgnored(SIGINT) ? 3 : 4);
  });
  EXPECT_EQ(signalOf(status), 0);
  EXPECT_EQ(WEXITSTATUS(status), 3);
}

TEST(EndingSignals, WaitWhileTheyAreHeld) {
  for (const int signal : ending) {
    std::array<int, 2> ends;
    ASSERT_EQ(pipe(ends.data()), 0);
    const int status = statusAfter([&] {
      const SignalsBlocked held;
      raise(signal);
      // Not reached by one that did not wait. This one ends the process at the end of this.
      std::ignore = write(ends[1], "", 1);
    });
    close(ends[1]);
    char byte = 1;
    EXPECT_EQ(read(ends[0], &byte, 1), 1);
    EXPECT_EQ(signalOf(status), signal);
    close(ends[0]);
  }
}

// The thread that they came to does not clear up by itself: the main one may be in the middle of a
// change.
TEST(EndingSignals, WaitForTheMainThreadWhicheverThreadTheyCameTo) {
  for (const int signal : ending) {
    const int status = statusAfter([&] {
      const SignalsBlocked held;
      std::thread([&] {
        sigset_t none;
        sigemptyset(&none);
        pthread_sigmask(SIG_SETMASK, &none, nullptr);
        pthread_kill(pthread_self(), signal);
      }).join();
      sigset_t pending;
      sigpending(&pending);
      std::_Exit(sigismember(&pending, signal) == 1 ? 3 : 4);
    });
    EXPECT_EQ(signalOf(status), 0);
    EXPECT_EQ(WEXITSTATUS(status), 3);
  }
}

TEST(EndingSignals, OnlyThoseOfATerminalStayIgnored) {
  for (const int signal : {SIGTERM, SIGUSR1, SIGPIPE}) {
    struct sigaction before{};
    struct sigaction ignored{};
    ignored.sa_handler = SIG_IGN;
    sigaction(signal, &ignored, &before);
    EXPECT_FALSE(staysIgnored(signal));
    sigaction(signal, &before, nullptr);
  }
}

}  // namespace
}  // namespace platform
