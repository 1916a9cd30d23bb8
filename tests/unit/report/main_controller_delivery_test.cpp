// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>

#include "platform/event_loop/fatal_error.h"
#include "platform/files/files.h"
#include "support/environment.h"
#include "support/http_server.h"
#include "support/process_controller.h"
#include "support/temporary_folder.h"

// Deliveries that end the process are tested with the whole program; here the window is missing but
// the run is not silent, so that the process goes on.

namespace app {
namespace {

diagnostics::Endpoints endpointsAt(const std::string& url) {
  diagnostics::Endpoints endpoints = diagnostics::builtInEndpoints();
  endpoints.submitUrl = url;
  return endpoints;
}

// Remembers the outcome and does nothing else with it.
class Uploading final : public MainController {
 public:
  explicit Uploading(const std::string& url)
      : MainController(support::eventLoop(), endpointsAt(url)) {
    awakeFromNib();
  }
  void onHttpDone(const report::Http& client) override { outcome = client.reply(); }
  void onHttpError(const report::Http& /*client*/) override { outcome = "failed"; }

  Text outcome;
};

// A report of one command that printed `output`, which must outlive it.
text::Buffers reportOf(const std::string& output) {
  text::Buffers report;
  report::addBlock(report, {"cmd", output, std::nullopt});
  return report;
}

const std::string start = std::string(45, '-') + "Results for: cmd\nstdout:\n";

std::string uploadedBody(const std::string& output) {
  std::string request;
  {
    support::HttpServer server({[&](const support::ServerConnection& connection) {
      request = connection.readRequest();
      connection.send(support::reply("200 OK", "done"));
    }});
    Uploading controller(server.url());
    controller.results = reportOf(output);
    EXPECT_TRUE(controller.submitResults());
    support::turnUntil([&] { return controller.outcome.has_value(); });
    EXPECT_EQ(controller.outcome, "done");
    EXPECT_EQ(text::join(controller.results), start + output + '\n');
  }
  const std::string body = request.substr(request.find("\r\n\r\n") + 4);
  EXPECT_GE(body.size(), 110U);
  return body.substr(87, body.size() - 110);
}

// Output that makes a report of `size` bytes.
std::string outputForSize(std::size_t size) {
  return "tail" + std::string(size - start.size() - 5, 'x');
}

TEST(Delivery, AReportThatFitsIsUploadedWhole) {
  EXPECT_EQ(uploadedBody("x"), start + "x\n");
  const std::string output = outputForSize(1'000'000);
  EXPECT_EQ(uploadedBody(output), start + output + '\n');
}

TEST(Delivery, ALargerReportIsUploadedTrimmed) {
  const std::string output = outputForSize(1'000'001);
  EXPECT_EQ(uploadedBody(output),
            (start + output).substr(0, 1'000'001 - 28) + "<This log has been trimmed>");
}

TEST(Delivery, IsMeasuredAndUploadedUpToTheFirstNul) {
  EXPECT_EQ(uploadedBody(std::string("a\0b", 3)), start + "a");
  EXPECT_EQ(uploadedBody("tail" + std::string(1, '\0') + std::string(2'000'000, 'x')),
            start + "tail");
}

TEST(Delivery, AnEmptyReportFailsAtOnce) {
  Uploading controller("http://127.0.0.1:1/");
  controller.submitResults();
  EXPECT_EQ(controller.outcome, "failed");
}

TEST(Delivery, KeepsTheReplyAsReceived) {
  support::HttpServer server(
      {support::answer(support::reply("200 OK", " https://r.example/1 \n"))});
  MainController controller(support::eventLoop(), endpointsAt(server.url()));
  controller.awakeFromNib();
  const std::string output = "x";
  controller.results = reportOf(output);
  controller.submitResults();
  support::turnUntil([&] { return !controller.resultsUrl.empty(); });
  EXPECT_EQ(controller.resultsUrl, " https://r.example/1 \n");
}

class SavedReport : public testing::Test {
 protected:
  support::TemporaryFolder home;
  support::ScopedVariable variable{"HOME", home.path().c_str()};
  support::ScopedVariable config{"XDG_CONFIG_HOME", home.path("config").c_str()};
};

TEST_F(SavedReport, HoldsTheWholeText) {
  MainController controller(support::eventLoop());
  controller.isSilent = true;
  const std::string output = std::string("a\0b", 3) + outputForSize(1'200'000);
  controller.results = reportOf(output);
  controller.saveToDesktop();
  EXPECT_EQ(support::contentsOf(home.path("Desktop/diagnostic_results.txt")),
            start + output + '\n');
}

TEST_F(SavedReport, IsSavedAfterAnErrorUntilItHasReachedSomebody) {
  const std::string path = home.path("Desktop/diagnostic_results.txt");
  const platform::FatalErrorHooks& measures = platform::onFatalError();
  Uploading controller("");
  measures.saveReport();
  EXPECT_FALSE(platform::pathExists(path));
  // The upload fails, and nothing is done about it.
  controller.handleAllTestsFinished();
  measures.saveReport();
  EXPECT_TRUE(platform::pathExists(path));
  ASSERT_EQ(std::remove(path.c_str()), 0);
  measures.saveReport();
  EXPECT_FALSE(platform::pathExists(path));

  controller.handleAllTestsFinished();
  controller.MainController::onHttpDone(*controller.http);
  measures.saveReport();
  EXPECT_FALSE(platform::pathExists(path));
}

TEST_F(SavedReport, ThatCannotBeWrittenIsLogged) {
  MainController controller(support::eventLoop());
  controller.isSilent = true;
  testing::internal::CaptureStderr();
  controller.writeToPath(home.path("missing/report.txt"));
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              testing::EndsWith("] could not save diagnostic_results.txt\n"));
}

TEST_F(SavedReport, ThatFindsNoDesktopIsLoggedBeforeAnotherPlaceIsTried) {
  const support::ScopedVariable temporary("TMPDIR", home.path().c_str());
  home.write("Desktop", "a file in its place");
  MainController controller(support::eventLoop());
  controller.isSilent = true;
  const std::string output = "x";
  controller.results = reportOf(output);
  testing::internal::CaptureStderr();
  controller.saveToDesktop();
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              testing::ContainsRegex("could not save diagnostic_results.txt\n"
                                     ".*saving the report to .*/diagnostic_results.txt\n$"));
}

}  // namespace
}  // namespace app
