// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "text/standard_streams.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>
#include <thread>

#include "support/refused_call.h"

namespace text {
namespace {

class Pipe {
 public:
  Pipe() { EXPECT_EQ(pipe(ends.data()), 0); }
  ~Pipe() {
    closeReadEnd();
    closeWriteEnd();
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;
  void closeReadEnd() { shut(0); }
  void closeWriteEnd() { shut(1); }
  int readEnd() const { return ends[0]; }
  int writeEnd() const { return ends[1]; }

 private:
  void shut(std::size_t i) {
    if (ends[i] >= 0) {
      close(ends[i]);
      ends[i] = -1;
    }
  }
  std::array<int, 2> ends{};
};

// Standard output replaced by another descriptor for the time of a test.
class StandardOutput {
 public:
  explicit StandardOutput(int fd) : before(dup(STDOUT_FILENO)) { dup2(fd, STDOUT_FILENO); }
  ~StandardOutput() {
    dup2(before, STDOUT_FILENO);
    close(before);
  }
  StandardOutput(const StandardOutput&) = delete;
  StandardOutput& operator=(const StandardOutput&) = delete;

 private:
  int before;
};

#ifdef SYS_poll
TEST(StandardStreamsDeathTest, TellsThatItCannotWait) {
  EXPECT_EXIT(
      {
        const Pipe pipe;
        fcntl(pipe.writeEnd(), F_SETFL, O_NONBLOCK);
        if (!support::refuseCall(SYS_poll, ENOMEM)) {
          std::_Exit(2);
        }
        std::_Exit(writeAll(pipe.writeEnd(), {std::string(1'000'000, 'x')}) == ENOMEM ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}
#endif

TEST(StandardStreams, WritesAllBytesAlsoWhereItHasToWait) {
  // More pieces than one call takes, of all sizes, some of them empty.
  std::string bytes;
  for (int i = 0; i < 3000; ++i) {
    bytes += std::string(static_cast<std::size_t>(i), static_cast<char>('a' + i % 26));
  }
  Buffers pieces;
  for (std::size_t i = 0, start = 0; i < 3000; start += i, ++i) {
    pieces.push_back(std::string_view(bytes).substr(start, i));
  }
  for (const int flags : {0, O_NONBLOCK}) {
    Pipe pipe;
    fcntl(pipe.writeEnd(), F_SETFL, flags);
    std::string received;
    std::thread reader([&] {
      std::array<char, 4096> block;
      for (ssize_t count = 1; count > 0;) {
        count = read(pipe.readEnd(), block.data(), block.size());
        received.append(block.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
      }
    });
    EXPECT_EQ(writeAll(pipe.writeEnd(), pieces), 0);
    pipe.closeWriteEnd();
    reader.join();
    EXPECT_TRUE(received == bytes);
  }
}

TEST(StandardStreams, ReportsTheSystemsError) {
  EXPECT_EQ(writeAll(-1, {"x"}), EBADF);
  EXPECT_EQ(writeAll(-1, {""}), 0);
}

TEST(StandardStreams, AReaderThatHasGoneIsNoError) {
  Pipe pipe;
  pipe.closeReadEnd();
  const StandardOutput replaced(pipe.writeEnd());
  EXPECT_FALSE(writeStandardOutput({"x"}));
}

TEST(StandardStreams, AFullDiskIsAnError) {
  const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
  ASSERT_GE(full, 0);
  const StandardOutput replaced(full);
  EXPECT_EQ(writeStandardOutput({"x"}), std::errc::no_space_on_device);
  close(full);
}

}  // namespace
}  // namespace text
