// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Web servers that are out of order, and what looks like it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "report_text.h"

namespace reader {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

const char* const badGateway =
    "<html>\n<head><title>502 Bad Gateway</title></head>\n<body>nginx</body>\n</html>\n";

TEST(Portal, IsNotAServiceThatIsOutOfOrder) {
  ReportText report = ReportText::bare();
  report.setAll("web-", badGateway)
      .set("web-block-id-head", "HTTP/1.1 502 Bad Gateway\nServer: nginx\n");
  EXPECT_THAT(found(report), ElementsAre("web-check-fails"));
  report.set("web-block-id-head", "HTTP/1.1 302 Found\nLocation: http://192.168.1.1/\n");
  EXPECT_THAT(found(report), ElementsAre("web-check-fails", "warning web-check-unknown"));
}

TEST(Portal, MayGiveErrors) {
  const std::string title = "511 Network Authentication Required";
  ReportText report = ReportText::bare();
  report.setAll("web-", "<title>" + title + "</title>\n");
  EXPECT_THAT(found(report), ElementsAre("captive-portal"));
  const std::string elsewhere = "HTTP/1.1 302 Found\nLocation: http://192.168.1.1/\n\n";
  report = ReportText::bare();
  report.setAll("web-", badGateway).set("web-monitor", "<p>Welcome.</p>\n");
  report.set("web-block-id-head", elsewhere + "HTTP/1.1 405 Method Not Allowed\n");
  EXPECT_THAT(found(report), ElementsAre("captive-portal"));
  report.set("web-block-id-head", "HTTP/1.1 " + title + "\n");
  EXPECT_THAT(found(report), Not(Contains("captive-portal")));
  report.set("web-block-page", "<p>Welcome.</p>\n");
  EXPECT_THAT(found(report), ElementsAre("captive-portal"));
  EXPECT_THAT(firstEvidence(report), Contains("web-block-id-head: HTTP/1.1 " + title));
}

TEST(Portal, HasOneTitleOrOnePage) {
  const auto foundWith = [](const std::string& one, const std::string& other) {
    ReportText report = ReportText::bare();
    report.setAll("web-", "").set("web-block-id", one).set("web-monitor", other);
    return found(report).front();
  };
  EXPECT_EQ(foundWith("<html>\n<p>A</p>\n", "<html>\n<p>A</p>\n\n"), "captive-portal");
  EXPECT_EQ(foundWith("<html>\n<p>A</p>\n", "<html>\n<p>B</p>\n"), "web-check-fails");
  EXPECT_EQ(foundWith("<title>A</title>\n<p>A</p>\n", "<html>\n<title>A</title>\n<p>B</p>\n"),
            "captive-portal");
  EXPECT_EQ(foundWith("<html>\n<title>A</title>\n", "<html>\n<title>B</title>\n"),
            "web-check-fails");
  EXPECT_EQ(foundWith("<html>\n<title>A</title>\n", "<html>\n"), "web-check-fails");
}

TEST(BlockPage, IsNotMissedWhereAnErrorCame) {
  ReportText report = ReportText::clear();
  report.set("web-grey-blocked", "<title>504 Gateway Timeout</title>\n",
             "< HTTP/1.1 504 Gateway Timeout\n");
  EXPECT_THAT(found(report), ElementsAre("web-check-fails"));
  report.set("web-grey-blocked", "an allowed page\n", "< HTTP/1.1 200 OK\n");
  EXPECT_THAT(found(report), ElementsAre("no-block-page"));
}

TEST(BlockPage, IsNotMissedWithoutTheSkivra) {
  ReportText report = ReportText::clear();
  report.set("web-blocked-ip", "a test page\n", "< HTTP/1.1 200 OK\n");
  EXPECT_THAT(found(report), ElementsAre("no-block-page"));
  const std::string missing = "/bin/ls: cannot access 'x': No such file or directory\n";
  report.setAll("skivra-folder", "", missing).set("skivra-state", "", missing);
  EXPECT_THAT(found(report), ElementsAre("note skivra-not-installed"));
}

TEST(ToolError, IsAMissingCurl) {
  const std::string missing = "/bin/sh: 1: /usr/bin/curl: not found";
  ReportText report = ReportText::clear();
  report.set("web-grey-allowed", "", missing + "\n");
  EXPECT_THAT(found(report), ElementsAre("warning tool-error"));
  EXPECT_EQ(firstText(report), "Tools printed something else than a result: curl.");
  EXPECT_THAT(firstEvidence(report), ElementsAre("web-grey-allowed: " + missing));
  for (const char* error :
       {"* Trying 203.0.113.77:80...\n", "curl: (7) Failed to connect\n",
        "  % Total    % Received % Xferd\n", "a warning\n* Closing connection 0\n", "", "\n"}) {
    report.set("web-grey-allowed", "", error);
    EXPECT_THAT(found(report), ElementsAre("web-check-fails")) << error;
  }
  report.set("web-grey-allowed", "an allowed page\n", "a warning\n");
  EXPECT_THAT(found(report), IsEmpty());
}

}  // namespace
}  // namespace reader
