// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "reader/output/table.h"

#include <gtest/gtest.h>

#include "reader/parse/titles.h"
#include "report_text.h"

namespace reader {
namespace {

TableRow row(const std::string& file, const std::vector<std::string>& problems,
             const std::string& address) {
  return {.file = file,
          .problems = problems,
          .facts = {{"system", "Debian"}, {"public address", address}}};
}

TEST(Table, HasColumnsAsWideAsWhatStandsInThem) {
  EXPECT_EQ(tableOf({row("a", {}, "192.0.2.1"), row("caf\u00E9-with-a-name", {}, "192.0.2.2")}),
            "Report            Problems  Computer  Public address  Name servers\n"
            "a                 nothing             192.0.2.1\n"
            "caf\u00E9-with-a-name  nothing             192.0.2.2\n"
            "\nAll 2 have in common\nsystem: Debian\n");
}

TEST(Table, CountsTheMachinesThatShareAProblem) {
  const std::string table =
      tableOf({row("a", {"vpn"}, "x"), row("b", {"vpn", "small-mtu"}, "x"), row("c", {}, "x"),
               row("d", {"small-mtu", "vpn"}, "x"), row("e", {"clock-wrong"}, "x")});
  EXPECT_NE(
      table.find("\nShared problems\n3 of 5: vpn\n2 of 5: small-mtu\n1 of 5: nothing\n\nAll 5"),
      std::string::npos)
      << table;
}

TEST(Table, SaysWhatASharedProblemIsIfItIsTheSameForAll) {
  std::vector<TableRow> rows = {row("a", {"vpn", "small-mtu"}, ""),
                                row("b", {"vpn", "small-mtu"}, ""), row("c", {}, "")};
  rows[0].sentences = {{"vpn", "A tunnel."}, {"small-mtu", "It is 1000."}};
  rows[1].sentences = {{"vpn", "A tunnel."}, {"small-mtu", "It is 900."}};
  const std::string table = tableOf(rows);
  EXPECT_NE(table.find("\n2 of 3: small-mtu\n2 of 3: vpn: A tunnel.\n1 of 3: nothing\n"),
            std::string::npos)
      << table;
}

TEST(Table, SaysNothingOfProblemsThatNobodyShares) {
  EXPECT_EQ(tableOf({row("a", {"vpn"}, ""), row("b", {}, "")}).find("Shared"), std::string::npos);
}

TEST(Table, TellsReportsThatSayNothingFromThoseThatSayLittle) {
  std::vector<TableRow> rows = {row("a", {"vpn"}, ""), row("b", {"vpn"}, ""), row("c", {}, ""),
                                row("d", {}, ""), row("e", {}, "")};
  rows[1].isIncomplete = rows[3].isIncomplete = rows[4].isIncomplete = true;
  rows[4].warnings = {"proxy"};
  const std::string table = tableOf(rows);
  for (const char* line :
       {"\na       vpn\n", "\nb       vpn (incomplete)\n", "\nc       nothing\n",
        "\nd       nothing (incomplete)\n", "\ne       nothing (incomplete) (warnings: proxy)\n",
        "\n2 of 5: vpn\n1 of 5: nothing\n2 of 5: nothing (incomplete)\n"}) {
    EXPECT_NE(table.find(line), std::string::npos) << line << table;
  }
}

/// Whether the table calls this report incomplete.
bool isIncomplete(const std::string& text) {
  return rowOf(readReport("test", text)).isIncomplete;
}

TEST(Table, KnowsReportsThatLackWhatFindingsRestOn) {
  const std::string whole = ReportText::clear().text();
  EXPECT_FALSE(isIncomplete(whole));
  EXPECT_FALSE(isIncomplete(ReportText::bare().text()));
  EXPECT_FALSE(isIncomplete(ReportText::macos().text()));
  EXPECT_TRUE(isIncomplete(whole.substr(0, 3000)));
  EXPECT_TRUE(isIncomplete(ReportText::clear().remove("web-grey-blocked-8081").text()));
  const auto shortenedAt = [&](const std::string& name) {
    std::string text = whole;
    const std::size_t end = text.find(separator, text.find(name));
    return text.replace(end - 30, 30, trimmingMarker);
  };
  EXPECT_TRUE(isIncomplete(shortenedAt("/sbin/ifconfig -a")));
  // It is shown, but nothing is concluded from it.
  EXPECT_FALSE(isIncomplete(shortenedAt("/usr/bin/tail")));
}

TEST(Table, BeginsWithWhatIsRare) {
  const std::string table =
      tableOf({row("a", {}, ""), row("b", {"vpn"}, ""), row("c", {"vpn"}, ""),
               row("d", {"small-mtu"}, ""), row("e", {}, ""), row("f", {}, "")});
  std::string order;
  for (std::size_t at = 0; at < table.find("\n\n"); at = table.find('\n', at) + 1) {
    order += table[at];
  }
  EXPECT_EQ(order, "Rdbcaef");
}

}  // namespace
}  // namespace reader
