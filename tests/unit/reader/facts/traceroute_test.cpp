// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Hops at which several hosts answer, and those that no path can have.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "reader/output/reading.h"
#include "report_text.h"

namespace reader {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/// The path to the service's API, by these lines.
struct Read {
  explicit Read(const std::string& lines)
      : text(ReportText::bare()
                 .set("path-api", "traceroute to host (203.0.113.11), 30 hops max\n" + lines)
                 .text()),
        reading(readReport("test", text)),
        path(*reading.facts.path("path-api")) {}
  std::string text;
  ReportReading reading;
  const Path& path;
};

TEST(Traceroute, KnowsAllHostsOfAHop) {
  const Read read(
      " 5  a.example (192.0.2.204)  40.8 ms !X  host (203.0.113.11)  41.8 ms  41.9 ms\n");
  ASSERT_THAT(read.path.hops, SizeIs(1));
  const Hop& hop = read.path.hops[0];
  EXPECT_EQ(hop.name, "a.example");
  EXPECT_EQ(hop.address, "192.0.2.204");
  EXPECT_EQ(hop.note, "!X");
  ASSERT_THAT(hop.others, SizeIs(1));
  EXPECT_EQ(hop.others[0].address, "203.0.113.11");
  EXPECT_EQ(hop.others[0].note, "");
  EXPECT_TRUE(read.path.isReached());
}

TEST(Traceroute, NotesEachHostOnItsOwn) {
  const Read read(
      " 5  a.example (192.0.2.204)  40.8 ms  host (203.0.113.11)  41.8 ms !H\n"
      "    a.example (192.0.2.204)  40.8 ms a.example (192.0.2.204)  40.9 ms\n");
  const Hop& hop = read.path.hops.at(0);
  EXPECT_EQ(hop.note, "");
  ASSERT_THAT(hop.others, SizeIs(2));
  EXPECT_EQ(hop.others[0].note, "!H");
  EXPECT_EQ(hop.others[1].address, "192.0.2.204");
  EXPECT_FALSE(read.path.isReached());
}

TEST(Traceroute, ReachesAHostThatRefusesProbes) {
  for (const std::string note : {"!X", "!A", "!Z", "!"}) {
    EXPECT_TRUE(Read(" 5  host (203.0.113.11)  41.8 ms " + note + "\n").path.isReached()) << note;
  }
  for (const std::string note : {"!H", "!N"}) {
    EXPECT_FALSE(Read(" 5  host (203.0.113.11)  41.8 ms " + note + "\n").path.isReached()) << note;
  }
  EXPECT_FALSE(Read(" 5  a.example (192.0.2.204)  41.8 ms !X\n").path.isReached());
}

TEST(Traceroute, HopsAreFewAndFollowEachOther) {
  const Read read(
      " 1  a (198.18.7.1)  1 ms\n 1  b (198.18.7.2)  1 ms\n 255  c (198.18.7.3)  1 ms\n"
      " 254  d (198.18.7.4)  1 ms\n 256  e (198.18.7.5)  1 ms\n");
  std::vector<int> numbers;
  for (const Hop& hop : read.path.hops) {
    numbers.push_back(hop.number);
    EXPECT_THAT(hop.timesMs, ElementsAre(1));
    EXPECT_THAT(hop.others, IsEmpty());
  }
  EXPECT_THAT(numbers, ElementsAre(1, 255));
}

}  // namespace
}  // namespace reader
