// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The machine's clock.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "report_text.h"

namespace reader {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

/// What dig says, and a web server: "Sun Nov 22 02:46:58 UTC 2026", "Sun, 22 Nov 2026 02:46:58
/// GMT".
ReportText withClocks(const std::string& dig, const std::string& server) {
  ReportText report = ReportText::bare();
  report.replace("myip", "Sun Nov 22 02:46:58 UTC 2026", dig);
  report.replace("web-block-id-head", "Sun, 22 Nov 2026 02:46:58 GMT", server);
  return report;
}

const std::string serverClock = "Sun, 22 Nov 2026 02:46:58 GMT";

TEST(Clock, MayBeWrongByYears) {
  ReportText report = ReportText::bare();
  report.replace("", "UTC 2026", "UTC 1996");
  EXPECT_THAT(found(report), ElementsAre("clock-wrong"));
  report.set("web-block-id-head", "");
  EXPECT_THAT(found(report), ElementsAre("clock-wrong", "web-check-fails"));
}

TEST(Clock, MayBeWrongByMinutes) {
  const ReportText report = withClocks("Sun Nov 22 03:46:58 UTC 2026", serverClock);
  EXPECT_THAT(found(report), ElementsAre("clock-wrong"));
  EXPECT_EQ(firstText(report),
            "The machine's clock is wrong by 60 minutes: it shows Sun Nov 22 03:46:58 UTC 2026.");
  EXPECT_THAT(firstEvidence(report),
              ElementsAre("myip: ;; WHEN: Sun Nov 22 03:46:58 UTC 2026",
                          "web-block-id-head: Date: Sun, 22 Nov 2026 02:46:58 GMT"));
}

TEST(Clock, IsComparedWithThatOfAServer) {
  struct Row {
    const char* clock;
    const char* difference;
  };
  const std::vector<Row> rows{
      {"Sun Nov 22 02:46:58 UTC 2026", ""},
      {"Sun Nov 22 03:01:58 UTC 2026", "15 minutes"},
      {"Sun Nov 22 03:00:58 UTC 2026", ""},
      {"Sun Nov 22 02:31:58 UTC 2026", "15 minutes"},
      {"Sun Nov 22 02:32:58 UTC 2026", ""},
      {"Sun Nov 22 03:01:58 GMT 2026", "15 minutes"},
      {"Mon Nov 23 02:45:58 UTC 2026", "1439 minutes"},
      {"Mon Nov 23 02:46:58 UTC 2026", "more than a day"},
      {"Tue Nov 24 02:45:58 UTC 2026", "more than a day"},
      {"Tue Nov 24 02:46:58 UTC 2026", "2 days"},
      {"Wed Nov 25 02:45:58 UTC 2026", "2 days"},
      {"Wed Nov 25 02:46:58 UTC 2026", "3 days"},
      // In a zone that is not known, and without any.
      {"Mon Nov 23 04:45:58 CET 2026", ""},
      {"Mon Nov 23 04:46:58 CET 2026", "more than a day"},
      {"Mon Nov 23 04:45:58 2026", ""},
      {"Mon Nov 23 04:46:58 2026", "more than a day"},
      {"Thu Jan 22 02:46:58 UTC 2026", "304 days"},
      {"Sun Feb 22 02:46:58 UTC 2026", "273 days"},
      {"Sun Mar 22 02:46:58 UTC 2026", "245 days"},
      {"Wed Apr 22 02:46:58 UTC 2026", "214 days"},
      {"Fri May 22 02:46:58 UTC 2026", "184 days"},
      {"Mon Jun 22 02:46:58 UTC 2026", "153 days"},
      {"Wed Jul 22 02:46:58 UTC 2026", "123 days"},
      {"Sat Aug 22 02:46:58 UTC 2026", "92 days"},
      {"Tue Sep 22 02:46:58 UTC 2026", "61 days"},
      {"Thu Oct 22 02:46:58 UTC 2026", "31 days"},
      {"Tue Dec 22 02:46:58 UTC 2026", "30 days"},
      {"Mon Nov 22 02:46:58 UTC 9999", "2912078 days"},
      // What is no time proves nothing.
      {"Tue Nov 22 02:46:58 UTC 10000", ""},
      {"Sun Nov xx 02:46:58 UTC 2025", ""},
      {"Sun Nov 31 02:46:58 UTC 2025", ""},
      {"Sun Nox 22 02:46:58 UTC 2025", ""},
      {"Sun Nov 22 xx:46:58 UTC 2025", ""},
      {"Sun Nov 22 02:xx:58 UTC 2025", ""},
      {"Sun Nov 22 02:46:58 UTC xxxx", ""},
      {"Nov 22 02:46:58 2025", ""},
      {"Nov", ""},
  };
  for (const Row& row : rows) {
    const std::string difference = row.difference;
    const ReportText report = withClocks(row.clock, serverClock);
    if (difference.empty()) {
      EXPECT_THAT(found(report), IsEmpty()) << row.clock;
    } else {
      EXPECT_THAT(found(report), ElementsAre("clock-wrong")) << row.clock;
      EXPECT_THAT(firstText(report), HasSubstr("by " + difference + ":")) << row.clock;
    }
  }
}

TEST(Clock, IsComparedWithAnyServersTime) {
  const std::string clock = "Sun Nov 22 02:46:58 UTC 2026";
  EXPECT_THAT(firstText(withClocks(clock, "Mon, 20 Oct 2025 01:16:58 GMT")),
              StartsWith("The machine's clock is wrong by 398 days"));
  EXPECT_THAT(found(withClocks(clock, "Sun, 22 Nov 2026 02:46:58")), IsEmpty());
  EXPECT_THAT(found(withClocks(clock, "Sun, 22 Nov 2026")), IsEmpty());
  EXPECT_THAT(found(withClocks(clock, "Sun, 22 Nov 2026 03:46:58")), ElementsAre("clock-wrong"));
  EXPECT_THAT(found(withClocks(clock, "Sun, 22 Nov")), IsEmpty());
  EXPECT_THAT(found(withClocks(clock, "then")), IsEmpty());
}

TEST(Clock, IsWrongWithoutAServerIfItIsBeforeTheProgram) {
  const ReportText report = withClocks("Tue Dec 31 23:59:58 UTC 2019", "then");
  EXPECT_THAT(found(report), ElementsAre("clock-wrong"));
  EXPECT_EQ(firstText(report),
            "The machine's clock is wrong: it shows Tue Dec 31 23:59:58 UTC 2019.");
  EXPECT_THAT(firstEvidence(report), ElementsAre("myip: ;; WHEN: Tue Dec 31 23:59:58 UTC 2019"));
  EXPECT_THAT(found(withClocks("Wed Jan 1 00:00:58 UTC 2020", "then")), IsEmpty());
}

TEST(Clock, IsNotComparedWithThatOfAnyServer) {
  const std::string wrong = "Sun, 22 Nov 2026 01:46:58 GMT";
  const std::string clock = "Sun Nov 22 02:46:58 UTC 2026";
  EXPECT_THAT(found(withClocks(clock, wrong)), ElementsAre("clock-wrong"));
  // A server whose clock was never set.
  EXPECT_THAT(found(withClocks(clock, "Tue, 31 Dec 2019 23:59:58 GMT")), IsEmpty());
  EXPECT_THAT(found(withClocks(clock, "Wed, 01 Jan 2020 00:00:58 GMT")),
              ElementsAre("clock-wrong"));
  // An answer that was kept for an hour, by the store that kept it.
  for (const char* age : {"Age: 3600", "age: 3600"}) {
    ReportText report = withClocks(clock, wrong);
    report.replace("web-block-id-head", "HTTP/1.1 200 OK\n",
                   std::string("HTTP/1.1 200 OK\n") + age + "\n");
    EXPECT_THAT(found(report), IsEmpty());
  }
  ReportText report = withClocks(clock, wrong);
  report.replace("web-block-id-head", "Location: ", "Age: 3600\nLocation: ");
  EXPECT_THAT(found(report), ElementsAre("clock-wrong"));
  // Somebody else's.
  report.replace("web-block-id-head", "HTTP/1.1 200 OK", "HTTP/1.1 404 Not Found");
  EXPECT_THAT(found(report), ElementsAre("web-check-fails"));
}

TEST(Clock, MayBeThatOfTheNextServer) {
  ReportText report = ReportText::clear();
  report.replace("web-block-id-head", "Sun, 22 Nov 2026 ", "Thu, 01 Jan 1970 ");
  EXPECT_THAT(found(report), IsEmpty());
  report.replace("web-blocked-ip", "Sun, 22 Nov 2026 ", "Sat, 21 Nov 2026 ");
  EXPECT_THAT(found(report), ElementsAre("clock-wrong"));
}

TEST(Clock, MayBeInAnotherZone) {
  ReportText report = ReportText::bare();
  report.replace("", "UTC 2026", "CET 2026");
  report.replace("", ";; WHEN: Sun Nov 22 02:", ";; WHEN: Sun Nov 22 03:");
  EXPECT_THAT(found(report), IsEmpty());
}

}  // namespace
}  // namespace reader
