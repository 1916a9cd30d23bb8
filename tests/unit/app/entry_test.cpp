// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "app/entry.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <iostream>

namespace app {
namespace {

constexpr int windowedStatus = 7;

// Launches nothing, and shows what it was given when the loop is turned.
class Shown final : public MainController {
 public:
  explicit Shown(platform::EventLoop& eventLoop) : MainController(eventLoop) {
    eventLoop.post([this] { show(); });
  }
  using MainController::startTest;
  void startTest(const std::string& /*launchPath*/, const std::vector<std::string>& /*args*/,
                 const Text& /*comment*/) override {
    ++started;
  }
  void show() const {
    std::cerr << "silent " << isSilent << " console " << isConsole << " force " << forceSkv
              << " skip " << skipSkv << " internet " << isInternet << " domain ["
              << domain.value_or("none") << "] output [" << outputFile.value_or("none")
              << "] limit " << maxPostSize << " started " << started << '\n';
  }
  int started = 0;
};

// The whole program with these arguments, its own path the first of them. Ends the process: with
// the status that the program ends with or returns.
[[noreturn]] void run(std::vector<std::string> arguments) {
  std::vector<char*> argv;
  argv.reserve(arguments.size() + 1);
  for (std::string& argument : arguments) {
    argv.push_back(argument.data());
  }
  argv.push_back(nullptr);
  const auto makeController = [](platform::EventLoop& loop) {
    return std::make_unique<Shown>(loop);
  };
  std::exit(runProgram(static_cast<int>(arguments.size()), argv.data(), makeController,
                       [](int& argc, char** /*argv*/, const ControllerFactory& /*make*/) {
                         std::cerr << "windowed with " << argc << '\n';
                         return windowedStatus;
                       }));
}

bool hasSerialNumber(const std::vector<const char*>& arguments) {
  return handleGateKeeperArgument(static_cast<int>(arguments.size()), arguments.data());
}

TEST(Entry, FindsAProcessSerialNumberAmongTheArguments) {
  EXPECT_TRUE(hasSerialNumber({"program", "-psn_0_123"}));
  EXPECT_TRUE(hasSerialNumber({"program", "-s", "-psn_"}));
  EXPECT_TRUE(hasSerialNumber({"-psn_1"}));
}

TEST(EntryDeathTest, GivesARunWithoutAWindowItsOptions) {
  const auto expectRun = [](const std::vector<std::string>& arguments, const std::string& shown) {
    EXPECT_EXIT(run(arguments), testing::ExitedWithCode(0), "^" + shown + "\n$");
  };
  expectRun({"program", "-s"},
            "silent 1 console 0 force 0 skip 0 internet 0 domain .none. output .none. "
            "limit 1000000 started [1-9][0-9]*");
  expectRun({"program", "-s", "-c"},
            "silent 1 console 1 force 0 skip 0 internet 0 domain .none. output "
            ".none. limit 1000000 started [1-9][0-9]*");
  expectRun({"program", "-s", "--skv", "-d="},
            "silent 1 console 0 force 1 skip 0 internet 0 domain .. output .none. limit "
            "1000000 started [1-9][0-9]*");
  expectRun({"program", "-s", "--noskv", "-o="},
            "silent 1 console 0 force 0 skip 1 internet 0 domain .none. output .. limit "
            "1000000 started [1-9][0-9]*");
  expectRun({"program", "-s", "-i", "-o=F", "-d=a.b"},
            "silent 1 console 0 force 0 skip 0 internet 1 domain .a.b. output .F. limit "
            "1000000 started [1-9][0-9]*");
}

TEST(EntryDeathTest, OpensAWindowInEveryOtherRun) {
  EXPECT_EXIT(run({"program"}), testing::ExitedWithCode(windowedStatus), "^windowed with 1\n$");
  EXPECT_EXIT(run({"program", "-s", "-psn_0_1"}), testing::ExitedWithCode(windowedStatus),
              "^windowed with 3\n$");
}

TEST(EntryDeathTest, TakesTheProgramsOwnPathForAnArgumentLikeAnyOther) {
  EXPECT_EXIT(run({"-h"}), testing::ExitedWithCode(0), "-h --help -., Display this usage");
  EXPECT_EXIT(run({"-s"}), testing::ExitedWithCode(0), "silent 1 .* started [1-9][0-9]*");
  EXPECT_EXIT(run({"-c", "-s"}), testing::ExitedWithCode(0), "silent 1 console 1");
  EXPECT_EXIT(run({"-psn_0_1", "-s"}), testing::ExitedWithCode(windowedStatus), "windowed with 2");
  EXPECT_EXIT(run({""}), testing::KilledBySignal(SIGABRT), "the program ends after an error");
}

TEST(Entry, TakesNoOtherArgumentForASerialNumber) {
  EXPECT_FALSE(hasSerialNumber({}));
  EXPECT_FALSE(hasSerialNumber({"program"}));
  EXPECT_FALSE(hasSerialNumber({"program", "-psn", "-ps", "-", ""}));
  EXPECT_FALSE(hasSerialNumber({"program", "-PSN_0", " -psn_0", "x-psn_0"}));
}

}  // namespace
}  // namespace app
