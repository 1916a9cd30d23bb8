// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "reader/output/reading.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "reader/parse/titles.h"
#include "report_text.h"

namespace reader {
namespace {

using testing::SizeIs;

std::string factOf(const std::string& text, std::string_view label) {
  const ReportReading reading = readReport("test", text);
  for (const auto& [name, value] : mainFacts(reading.facts)) {
    if (name == label) {
      return value;
    }
  }
  return "no such fact";
}

TEST(ReportReading, SaysEachThingOnce) {
  EXPECT_EQ(factOf(ReportText::bare()
                       .set("name-servers",
                            "DNS configuration\n\nresolver #1\n  nameserver[0] : 192.0.2.2\n"
                            "  nameserver[1] : 192.0.2.1\n  nameserver[2] : 192.0.2.2\n")
                       .text(),
                   "name servers"),
            "192.0.2.2 and 192.0.2.1");
}

TEST(ReportReading, KnowsAResolverByWhatStandsAroundItsServers) {
  const std::string text =
      ReportText::bare()
          .set("name-servers",
               "DNS configuration\n\nresolver #1\n  nameserver[0] : 192.0.2.1\n"
               "  if_index : 4 (en0)\n  nameserver[1] : 192.0.2.2\n\nresolver #2\n"
               "  domain : lan.example\n  nameserver[0] : 192.0.2.3\n")
          .text();
  const ReportReading reading = readReport("test", text);
  ASSERT_THAT(reading.facts.nameServers, SizeIs(3));
  EXPECT_EQ(reading.facts.nameServers[0].interface, "en0");
  EXPECT_EQ(reading.facts.nameServers[1].interface, "en0");
  EXPECT_EQ(reading.facts.nameServers[1].domain, "");
  EXPECT_EQ(reading.facts.nameServers[2].interface, "");
  EXPECT_EQ(reading.facts.nameServers[2].domain, "lan.example");
  EXPECT_EQ(factOf(text, "name servers"), "192.0.2.1 and 192.0.2.2");
}

TEST(ReportReading, SaysNothingOfTheSkivraWhoseStateItDoesNotKnow) {
  std::string text = ReportText::clear().text();
  EXPECT_EQ(factOf(text, "Skivra"), "protected");
  EXPECT_EQ(
      factOf(ReportText::clear().replace("skivra-state", "<key>state</key>", "").text(), "Skivra"),
      "installed");
  EXPECT_EQ(factOf(ReportText::clear()
                       .set("skivra-state", "", "cat: x: No such file or directory\n")
                       .set("skivra-folder", "", "ls: x: No such file or directory\n")
                       .set("skivra-folder-again", "", "ls: x: No such file or directory\n")
                       .text(),
                   "Skivra"),
            "not installed");
  const std::size_t end = text.find(separator, text.find("<key>state</key>"));
  text.replace(end - 30, 30, trimmingMarker);
  EXPECT_EQ(factOf(text, "Skivra"), "");
}

}  // namespace
}  // namespace reader
