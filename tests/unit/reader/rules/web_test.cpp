// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Web checks and the tested domain.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "report_text.h"

namespace reader {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const char* const portalPage = "<title>Hotel network</title>\n<p>Welcome.</p>\n";
const char* const blockPage =
    "<title>Blocked</title>\n<p>x is blocked by the Halvik filter of your network.</p>\n";

TEST(Portal, AnswersInPlaceOfAllServers) {
  ReportText report = ReportText::clear();
  report.setAll("web-", portalPage);
  report.set("web-block-id-head",
             "HTTP/1.1 302 Found\nLocation: http://192.168.1.1/login\n\nHTTP/1.1 200 OK\n\n");
  EXPECT_THAT(found(report), ElementsAre("captive-portal"));
  EXPECT_THAT(firstText(report), HasSubstr("\"Hotel network\""));
}

TEST(Portal, DoesNotLetTheServiceAnswer) {
  ReportText report = ReportText::bare();
  report.set("web-block-id", portalPage).set("web-by-number", portalPage);
  EXPECT_THAT(found(report), ElementsAre("warning web-check-unknown"));
}

TEST(BlockPage, StandsWhereNoneShouldBe) {
  ReportText report = ReportText::bare();
  report.set("web-monitor", blockPage);
  EXPECT_THAT(found(report), ElementsAre("unexpected-block-page"));
  EXPECT_THAT(firstText(report), HasSubstr("monitor.halvik.example"));
}

TEST(BlockPage, IsWhereNamesLead) {
  ReportText report = ReportText::bare();
  report.replace("ping-website", "203.0.113.10", "203.0.113.20");
  EXPECT_THAT(found(report), ElementsAre("unexpected-block-page"));
}

TEST(BlockPage, MayBeMissing) {
  ReportText report = ReportText::clear();
  report.set("web-grey-blocked", "<title>Bargains</title>\n<p>Download this.</p>\n");
  EXPECT_THAT(found(report), ElementsAre("no-block-page"));
  report.set("web-grey-blocked", blockPage).set("web-grey-allowed", blockPage);
  EXPECT_THAT(found(report), ElementsAre("unexpected-block-page"));
}

TEST(WebCheck, MayGiveNothingOrAnError) {
  ReportText report = ReportText::clear();
  report.set("web-monitor", "");
  EXPECT_THAT(found(report), ElementsAre("web-check-fails"));
  report.set("web-monitor", "<title>503 Service Unavailable</title>\n");
  report.set("web-grey-allowed", "", "curl: (7) Failed to connect to 203.0.113.77 port 80\n");
  EXPECT_THAT(found(report), ElementsAre("web-check-fails"));
  EXPECT_THAT(firstText(report),
              AllOf(HasSubstr("monitor.halvik.example/monitor/ (503 Service Unavailable)"),
                    HasSubstr("203.0.113.77/favicon.ico (curl: (7) Failed to connect")));
}

TEST(WebCheck, FailsForAnotherReasonIfItsNameIsUnknown) {
  ReportText report = ReportText::bare();
  report.set("web-monitor", "");
  for (const char* key : {"myip", "debug", "akamai-whoami", "ultradns-whoami"}) {
    report.set(key, digAnswer("", "192.168.1.1#53", "SERVFAIL"));
  }
  EXPECT_THAT(found(report), ElementsAre("name-resolution-fails"));
  report.set("web-by-number", "");
  EXPECT_THAT(found(report), ElementsAre("name-resolution-fails", "web-check-fails"));
}

std::string shopAt(const std::string& address) {
  return digAnswer("shop.example.\t60\tIN\tA\t" + address + "\n");
}

TEST(Domain, MayBeUnknownToTheService) {
  ReportText report = ReportText::clear();
  for (const char* key : {"domain", "domain-a", "domain-b", "skivra-domain"}) {
    report.set(key, digAnswer("", "192.0.2.53#53", "NXDOMAIN"));
  }
  EXPECT_THAT(found(report), ElementsAre("domain-missing"));
  EXPECT_THAT(firstText(report), HasSubstr("others know it"));
}

TEST(Domain, MayBeUnknownToOthersAlone) {
  ReportText report = ReportText::clear();
  report.set("domain-third-party", digAnswer("", "8.8.8.8#53", "NXDOMAIN"));
  EXPECT_THAT(found(report), ElementsAre("answers-differ"));
}

TEST(Domain, MayHaveAPrivateAddress) {
  ReportText report = ReportText::clear();
  report.set("domain-a", shopAt("10.1.2.3"));
  EXPECT_THAT(found(report), ElementsAre("domain-private"));
  report.replace("skivra-local-domains", "lan.example", "shop.example");
  EXPECT_THAT(found(report), ElementsAre("answers-differ"));
}

TEST(Domain, MayLeadToTheBlockPage) {
  ReportText report = ReportText::clear();
  report.set("domain-a", shopAt("203.0.113.20"));
  EXPECT_THAT(found(report), ElementsAre("warning domain-blocked"));
}

TEST(Domain, MayHaveSeveralAnswers) {
  ReportText report = ReportText::clear();
  report.set("domain-a", shopAt("198.18.40.79"));
  EXPECT_THAT(found(report), ElementsAre("answers-differ"));
  EXPECT_THAT(firstText(report), HasSubstr("192.0.2.53: 198.18.40.79"));
}

TEST(Domain, MayBeServedFromManyPlaces) {
  ReportText report = ReportText::clear();
  const std::string both =
      "shop.example.\t60\tIN\tA\t198.18.40.79\nshop.example.\t60\tIN\tA\t198.18.40.80\n";
  report.set("domain-a", digAnswer(both));
  EXPECT_THAT(found(report), IsEmpty());
  report.set("domain-a", digAnswer("shop.example.\t60\tIN\tCNAME\tedge.example.\n"
                                   "edge.example.\t60\tIN\tA\t198.18.40.79\n"));
  EXPECT_THAT(found(report), ElementsAre("note answers-differ"));
}

TEST(Portal, IsNamedByItsTitle) {
  ReportText report = ReportText::bare();
  report.setAll("web-", "<p>Welcome.</p>\n").set("web-block-id-head", "");
  EXPECT_THAT(found(report), ElementsAre("captive-portal"));
  EXPECT_EQ(firstText(report), "A captive portal answers web requests in place of the servers.");
  EXPECT_THAT(firstEvidence(report),
              ElementsAre("web-block-id: <p>Welcome.</p>", "web-monitor: <p>Welcome.</p>",
                          "web-block-page: <p>Welcome.</p>", "web-by-number: <p>Welcome.</p>"));
  report.set("web-monitor", portalPage).set("web-by-number", "<title>Later</title>\n");
  EXPECT_EQ(firstText(report),
            "A captive portal answers web requests in place of the servers, with the title \"Hotel "
            "network\".");
}

/// What curl prints of headers, the first of them a redirect to this address.
std::string redirected(const std::string& address) {
  return "HTTP/1.1 302 Found\nLocation: " + address + "\n\nHTTP/1.1 200 OK\n\n";
}

TEST(Portal, IsWhatSeveralServersLeadToOrRepeat) {
  ReportText report = ReportText::bare();
  report.setAll("web-", "").set("web-block-id", "<p>One.</p>\n");
  const auto isPortal = [&] {
    const std::vector<std::string> ids = found(report);
    return !ids.empty() && ids.front() == "captive-portal";
  };
  EXPECT_FALSE(isPortal());
  report.set("web-monitor", "<p>Two.</p>\n");
  EXPECT_FALSE(isPortal());
  report.set("web-by-number", "<p>Two.</p>\n");
  EXPECT_TRUE(isPortal());
  report.set("web-by-number", "");
  const std::vector<std::pair<std::string, bool>> rows{
      {"http://192.168.1.1/login", true},
      {"https://login.example:8080/halvik.example", true},
      {"http://www.halvik.example/login", false},
      {"http://www.halvik.example:8080", false},
      {"/login", false},
      {"http:///login", false},
  };
  for (const auto& [address, expected] : rows) {
    report.set("web-block-id-head", redirected(address));
    EXPECT_EQ(isPortal(), expected) << address;
  }
  report.set("web-block-id-head", redirected("http://192.168.1.1/login")).set("web-monitor", "");
  EXPECT_TRUE(isPortal());
  report.set("web-block-id", "");
  EXPECT_FALSE(isPortal());
}

TEST(Portal, ExplainsWhatItAnswers) {
  ReportText report = ReportText::clear();
  report.setAll("web-", portalPage).set("web-block-page", "");
  EXPECT_THAT(found(report), ElementsAre("captive-portal"));
  report.replace("ping-website", "203.0.113.10", "203.0.113.20");
  EXPECT_THAT(found(report), ElementsAre("captive-portal"));
  report.set("web-block-page", blockPage);
  EXPECT_THAT(found(report), testing::Not(testing::Contains("captive-portal")));
}

TEST(BlockPage, IsNamedOnceForEachHost) {
  ReportText report = ReportText::clear();
  for (const char* key : {"web-block-id", "web-monitor", "web-by-number", "web-grey-allowed",
                          "web-grey-allowed-8081"}) {
    report.set(key, blockPage);
  }
  for (const char* key : {"path-api", "path-monitor", "path-category-hit"}) {
    report.set(key,
               "traceroute to host (203.0.113.20), 30 hops max, 60 byte packets\n"
               " 1  host (203.0.113.20)  3.1 ms  3.2 ms  3.3 ms\n");
  }
  report.replace("ping-website", "203.0.113.10", "203.0.113.20");
  EXPECT_THAT(found(report), ElementsAre("unexpected-block-page"));
  EXPECT_EQ(firstText(report),
            "A block page stands where none should be: at api.halvik.example, "
            "monitor.halvik.example, category-hit.halvik.example, www.halvik.example, "
            "block-id.halvik.example, 203.0.113.80 and 203.0.113.77.");
  const std::string title = ": <title>Blocked</title>";
  const std::string trace = ": traceroute to host (203.0.113.20), 30 hops max, 60 byte packets";
  EXPECT_THAT(
      firstEvidence(report),
      ElementsAre("path-api" + trace, "path-monitor" + trace, "path-category-hit" + trace,
                  "ping-website: 5 packets transmitted, 5 received, 0% packet loss, time 4006ms",
                  "web-block-id" + title, "web-monitor" + title, "web-by-number" + title,
                  "web-grey-allowed" + title, "web-grey-allowed-8081" + title));
}

TEST(BlockPage, IsAtItsOwnAddressAlone) {
  ReportText report = ReportText::bare();
  report.replace("ping-website", "203.0.113.10", "203.0.113.20");
  report.set("path-block-page", "");
  EXPECT_THAT(found(report), IsEmpty());
  report.set("path-block-page", "", "block.halvik.example: Name or service not known\n");
  report.set("path-api", "", "api.halvik.example: Name or service not known\n");
  report.set("ping-website", "", "ping: www.halvik.example: Name or service not known\n");
  EXPECT_THAT(found(report), IsEmpty());
  report = ReportText::bare();
  report.remove("path-api").remove("ping-website");
  EXPECT_THAT(found(report), IsEmpty());
}

TEST(BlockPage, MayBeWhereTheDomainLeads) {
  ReportText report = ReportText::clear();
  report.set("web-monitor", blockPage);
  report.set("domain-a", digAnswer("shop.example.\t60\tIN\tA\t203.0.113.20\n"));
  EXPECT_THAT(found(report), ElementsAre("unexpected-block-page"));
}

TEST(BlockPage, IsMissedByItsAddress) {
  ReportText report = ReportText::clear();
  report.set("web-grey-blocked", "<title>Bargains</title>\n", "< HTTP/1.1 200 OK\n");
  report.set("web-blocked-ip", "<title>Bargains</title>\n");
  EXPECT_EQ(firstText(report),
            "No block page stands where one should be: at 203.0.113.66/some/page and "
            "203.0.113.77/malware.htm.");
  EXPECT_THAT(firstEvidence(report), ElementsAre("web-blocked-ip: <title>Bargains</title>",
                                                 "web-grey-blocked: < HTTP/1.1 200 OK"));
  report = ReportText::clear();
  for (const char* key : {"web-grey-blocked", "web-grey-blocked-8081"}) {
    report.set(key, "<title>Bargains</title>\n");
  }
  EXPECT_EQ(firstText(report),
            "No block page stands where one should be: at 203.0.113.77/malware.htm and "
            "203.0.113.77:8081/malware.htm.");
  report.set("web-grey-blocked", "").set("web-grey-blocked-8081", blockPage);
  EXPECT_THAT(found(report), ElementsAre("web-check-fails"));
}

TEST(WebCheck, FailsForThisReason) {
  struct Row {
    const char* output;
    const char* error;
    const char* reason;
  };
  const std::vector<Row> rows{
      {"", "", "nothing came"},
      {"", "curl: (7) Failed to connect\n", "curl: (7) Failed to connect"},
      {"<title>503 Service Unavailable</title>\n", "", "503 Service Unavailable"},
      {"<title>400 Bad Request</title>\n", "", "400 Bad Request"},
      {"<p>No.</p>\n", "< HTTP/1.1 400 Bad Request\n", "status 400"},
      {"<title>No</title>\n", "< HTTP/1.1 500 Error\n", "No"},
  };
  for (const Row& row : rows) {
    ReportText report = ReportText::bare();
    report.set("web-monitor", row.output, row.error);
    EXPECT_THAT(found(report), ElementsAre("web-check-fails")) << row.reason;
    EXPECT_EQ(firstText(report),
              "Web servers of the service give no page: monitor.halvik.example/monitor/ (" +
                  std::string(row.reason) + ").");
    EXPECT_THAT(firstEvidence(report), testing::SizeIs(1));
  }
  for (const char* output : {"<title>399 ways</title>\n", "<title>Other</title>\n"}) {
    ReportText report = ReportText::bare();
    report.set("web-monitor", output);
    EXPECT_THAT(found(report), ElementsAre("warning web-check-unknown")) << output;
  }
  ReportText report = ReportText::bare();
  report.set("web-monitor", "<p>Other</p>\n", "< HTTP/1.1 399 Moved\n");
  EXPECT_THAT(found(report), ElementsAre("warning web-check-unknown"));
}

TEST(WebCheck, ShowsTheLineOfEachFailure) {
  ReportText report = ReportText::bare();
  report.set("web-monitor", "", "curl: (7) Failed\n")
      .set("web-block-id", "<p>No.</p>\n", "< HTTP/1.1 404 Not Found\n");
  EXPECT_THAT(firstEvidence(report), ElementsAre("web-block-id: < HTTP/1.1 404 Not Found",
                                                 "web-monitor: curl: (7) Failed"));
}

TEST(WebCheck, HasLittleTimeWhereRoundTripsAreLong) {
  const std::string late = "curl: (28) Operation timed out after 2000 milliseconds\n";
  const auto foundAt = [&](double ms, const std::string& error) {
    ReportText report = ReportText::clear();
    report.set("ping-website", pingOutput("203.0.113.10", {ms, ms, ms, ms, ms}));
    return found(report.set("web-grey-allowed", "", error));
  };
  EXPECT_THAT(foundAt(300, late), ElementsAre("web-check-fails"));
  EXPECT_THAT(foundAt(301, late), IsEmpty());
  EXPECT_THAT(foundAt(400, "curl: (7) Failed to connect\n"), ElementsAre("web-check-fails"));
  ReportText report = ReportText::clear();
  report.set("ping-website", "").set("web-grey-allowed", "", late);
  EXPECT_THAT(found(report), ElementsAre("web-check-fails"));
}

TEST(WebCheck, FailsForAnotherReasonIfThePathToItsHostEnds) {
  const std::string hops = " 1  192.168.1.1 (192.168.1.1)  1.1 ms  1.2 ms  1.3 ms\n 2  * * *\n";
  ReportText report = ReportText::bare();
  report.set("path-monitor",
             "traceroute to host (203.0.113.12), 30 hops max, 60 byte packets\n" + hops);
  report.set("web-monitor", "");
  EXPECT_THAT(found(report), ElementsAre("path-ends-early"));
  report.set("path-monitor", "", "monitor.halvik.example: Name or service not known\n");
  EXPECT_THAT(found(report), ElementsAre("web-check-fails"));
}

TEST(WebCheck, MayGiveAnUnknownPage) {
  ReportText report = ReportText::bare();
  report.set("web-monitor", "<p>Other.</p>\n").set("web-by-number", "<p>Another.</p>\n");
  EXPECT_THAT(found(report), ElementsAre("warning web-check-unknown"));
  EXPECT_EQ(firstText(report),
            "A page that is not the service's usual one came from monitor.halvik.example/monitor/ "
            "and 203.0.113.80.");
  EXPECT_THAT(firstEvidence(report),
              ElementsAre("web-monitor: <p>Other.</p>", "web-by-number: <p>Another.</p>"));
}

TEST(Domain, IsUnknownInTheseLines) {
  const std::string answer = ";; ->>HEADER<<- opcode: QUERY, status: NXDOMAIN, id: 3280";
  ReportText report = ReportText::clear();
  for (const char* key : {"domain", "domain-b"}) {
    report.set(key, digAnswer("", "192.0.2.53#53", "NXDOMAIN"));
  }
  EXPECT_THAT(found(report), ElementsAre("domain-missing"));
  EXPECT_EQ(firstText(report),
            "There is no domain shop.example, say the machine's own resolver and 198.51.100.53; "
            "others know it.");
  EXPECT_THAT(firstEvidence(report), ElementsAre("domain: " + answer, "domain-b: " + answer));
  for (const char* key : {"domain-a", "domain-third-party", "skivra-domain"}) {
    report.set(key, digAnswer("", "192.0.2.53#53", "NXDOMAIN"));
  }
  EXPECT_EQ(firstText(report),
            "There is no domain shop.example, say the machine's own resolver, 192.0.2.53, "
            "198.51.100.53, 8.8.8.8 and 127.0.0.1.");
  report.set("domain-third-party", digAnswer(""));
  EXPECT_EQ(firstText(report),
            "There is no domain shop.example, say the machine's own resolver, 192.0.2.53, "
            "198.51.100.53 and 127.0.0.1.");
}

TEST(Domain, HasAPrivateAddressInTheseLines) {
  ReportText report = ReportText::clear();
  report.set("domain-a", shopAt("10.1.2.3")).set("domain", shopAt("198.18.40.80"));
  report.set("domain-b", digAnswer("shop.example.\t60\tIN\tTXT\t10.1.2.3\n"
                                   "shop.example.\t60\tIN\tA\t198.18.40.80\n"));
  EXPECT_THAT(found(report), ElementsAre("domain-private"));
  EXPECT_EQ(firstText(report),
            "The domain shop.example has a private address: 10.1.2.3 (192.0.2.53).");
  EXPECT_THAT(firstEvidence(report), ElementsAre("domain-a: shop.example.\t60\tIN\tA\t10.1.2.3"));
}

TEST(Domain, MayHaveAPrivateAddressForOthersAlone) {
  ReportText report = ReportText::clear();
  report.set("domain-third-party", shopAt("10.1.2.3"));
  EXPECT_THAT(found(report), ElementsAre("answers-differ"));
  report.set("skivra-domain", shopAt("10.1.2.3"));
  EXPECT_EQ(firstText(report),
            "The domain shop.example has a private address: 10.1.2.3 (8.8.8.8) and 10.1.2.3 "
            "(127.0.0.1).");
}

TEST(Domain, MayLeadNowhere) {
  ReportText report = ReportText::clear();
  report.set("domain", shopAt("0.0.0.0"));
  EXPECT_THAT(found(report), ElementsAre("domain-private"));
  EXPECT_EQ(firstText(report),
            "The domain shop.example has no real address: 0.0.0.0 (the machine's own resolver).");
  report.set("domain-a", shopAt("10.1.2.3"));
  EXPECT_EQ(firstText(report),
            "The domain shop.example has a private address: 0.0.0.0 (the machine's own resolver) "
            "and 10.1.2.3 (192.0.2.53).");
}

TEST(Domain, IsLocalIfTheSkivraSaysSo) {
  const std::vector<std::pair<const char*, bool>> rows{
      {"shop.example", true},      {".example", true},      {"example", true},
      {"op.example", false},       {"op.example.x", false}, {".", false},
      {"www.shop.example", false}, {"lan.example", false}};
  for (const auto& [local, isLocal] : rows) {
    ReportText report = ReportText::clear();
    report.set("domain-a", shopAt("10.1.2.3"));
    report.set("skivra-local-domains", std::string("printer.test\n") + local + "\n");
    EXPECT_THAT(found(report), ElementsAre(isLocal ? "answers-differ" : "domain-private")) << local;
  }
}

TEST(Domain, LeadsToTheBlockPageInTheseLines) {
  ReportText report = ReportText::clear();
  report.set("domain-a", digAnswer("shop.example.\t60\tIN\tTXT\t203.0.113.20\n"
                                   "shop.example.\t60\tIN\tA\t203.0.113.20\n"));
  EXPECT_EQ(firstText(report), "The domain shop.example leads to the block page.");
  EXPECT_THAT(firstEvidence(report),
              ElementsAre("domain-a: shop.example.\t60\tIN\tA\t203.0.113.20",
                          "path-block-page: traceroute to block.halvik.example (203.0.113.20), 30 "
                          "hops max, 60 byte packets"));
  report.set("path-block-page", "", "block.halvik.example: Name or service not known\n");
  EXPECT_THAT(found(report), ElementsAre("answers-differ"));
  report.remove("path-block-page");
  EXPECT_THAT(found(report), ElementsAre("answers-differ"));
}

TEST(Domain, HasTheseAnswers) {
  ReportText report = ReportText::clear();
  report.set("domain-a", digAnswer("shop.example.\t60\tIN\tA\t198.18.40.79\n"
                                   "shop.example.\t60\tIN\tA\t198.18.40.78\n"));
  report.set("domain-b", digAnswer(""));
  report.set("domain-third-party", digAnswer("", "8.8.8.8#53", "NXDOMAIN"));
  EXPECT_THAT(found(report), ElementsAre("answers-differ"));
  EXPECT_EQ(firstText(report),
            "Resolvers give different answers for shop.example (the machine's own resolver: "
            "198.18.40.80, 192.0.2.53: 198.18.40.78 and 198.18.40.79, 198.51.100.53: no address, "
            "8.8.8.8: no such domain and 127.0.0.1: 198.18.40.80).");
  const std::string header = ";; ->>HEADER<<- opcode: QUERY, status: ";
  EXPECT_THAT(firstEvidence(report),
              ElementsAre("domain: shop.example.\t\t60\tIN\tA\t198.18.40.80",
                          "domain-a: shop.example.\t60\tIN\tA\t198.18.40.79",
                          "domain-b: " + header + "NOERROR, id: 3280",
                          "domain-third-party: " + header + "NXDOMAIN, id: 3280",
                          "skivra-domain: shop.example.\t\t60\tIN\tA\t198.18.40.80"));
}

TEST(Domain, HasOneAnswerIfNobodyKnowsIt) {
  ReportText report = ReportText::clear();
  for (const char* key :
       {"domain", "domain-a", "domain-b", "domain-third-party", "skivra-domain"}) {
    report.set(key, digAnswer(""));
  }
  EXPECT_THAT(found(report), IsEmpty());
  report.set("domain-b", shopAt("198.18.40.79"));
  EXPECT_THAT(found(report), ElementsAre("answers-differ"));
}

TEST(Domain, IsNotJudgedByAComplaint) {
  ReportText report = ReportText::clear();
  report.set("domain-a", digAnswer("", "192.0.2.53#53", "SERVFAIL"));
  EXPECT_THAT(found(report), IsEmpty());
}

}  // namespace
}  // namespace reader
