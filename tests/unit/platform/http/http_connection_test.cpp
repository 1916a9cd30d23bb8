// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/http/http_connection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/environment.h"
#include "support/event_loop.h"
#include "support/http_server.h"

namespace platform {
namespace {

struct Events final : HttpConnectionDelegate {
  void connectionDidReceiveResponse(const HttpResponse& response) override {
    seen += "response " + std::to_string(response.statusCode) + "; ";
  }
  void connectionDidReceiveData(std::string_view data) override {
    seen += "data " + std::string(data) + "; ";
  }
  void connectionDidFinishLoading() override { end("finished"); }
  void connectionDidFailWithError() override { end("failed"); }
  void connectionDidRefuseReply() override { end("refused"); }
  void end(const char* how) {
    seen += how;
    ended = true;
  }

  std::string seen;
  bool ended = false;
};

std::unique_ptr<HttpConnection> sendTo(const std::string& url, Events& events) {
  return sendHttpRequest(support::eventLoop(), {.url = url, .contentType = "", .body = "x"}, events,
                         std::chrono::seconds(60));
}

std::string eventsOf(const std::string& url) {
  Events events;
  const auto connection = sendTo(url, events);
  support::turnUntil([&] { return events.ended; });
  return events.seen;
}

TEST(HttpConnection, TellsHeadDataAndEndInOrder) {
  const support::HttpServer server({support::answer(support::reply("200 OK", "body"))});
  EXPECT_EQ(eventsOf(server.url()), "response 200; data body; finished");
}

TEST(HttpConnection, ACompleteReplyOfAnyStatusHasFinished) {
  for (const char* status : {"400", "401", "403", "404", "409", "410", "418", "429", "499", "500",
                             "501", "502", "503", "599"}) {
    const support::HttpServer server({support::answer(support::reply(status, "body"))});
    EXPECT_EQ(eventsOf(server.url()), "response " + std::string(status) + "; data body; finished");
  }
}

TEST(HttpConnection, AReplyThatIsCutShortHasFailed) {
  const support::HttpServer server(
      {support::answer("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nhttp")});
  EXPECT_EQ(eventsOf(server.url()), "response 200; data http; failed");
}

TEST(HttpConnection, AReplyBeyondABoundIsRefused) {
  const std::string tooLong(1024UL * 1024, 'x');
  const support::HttpServer server(
      {support::answer("HTTP/1.1 200 OK\r\n\r\nhttp" + tooLong),
       support::answer("HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\n\r\nhttp")});
  EXPECT_TRUE(eventsOf(server.url()).ends_with("; refused"));
  EXPECT_EQ(eventsOf(server.url()), "refused");
}

TEST(HttpConnection, LogsWhyItFailed) {
  std::string url;
  {
    const support::HttpServer gone({});
    url = gone.url();
  }
  testing::internal::CaptureStderr();
  EXPECT_EQ(eventsOf(url), "failed");
  // libcurl's words are "Couldn't" or "Could not".
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              testing::AllOf(testing::HasSubstr(url), testing::HasSubstr(" connect to server")));
}

TEST(HttpConnection, EndsWithoutAnEventWhenItIsDestroyed) {
  std::promise<void> asked;
  Events events;
  {
    const support::HttpServer server({[&](const support::ServerConnection& client) {
      client.readRequest();
      asked.set_value();
      client.waitForClose();
    }});
    {
      const auto connection = sendTo(server.url(), events);
      const std::future<void> arrived = asked.get_future();
      support::turnUntil([&] {
        support::eventLoop().post([] {});
        return arrived.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
      });
    }
  }
  EXPECT_EQ(events.seen, "");
}

TEST(HttpConnection, GoesThroughTheProxyOfTheEnvironment) {
  std::string request;
  {
    const support::HttpServer proxy({[&](const support::ServerConnection& client) {
      request = client.readRequest();
      client.send(support::reply("200 OK", "from the proxy"));
    }});
    const support::ScopedVariable variable("http_proxy", proxy.url("").c_str());
    const support::ScopedVariable none("no_proxy", nullptr);
    EXPECT_EQ(eventsOf("http://diagnostic.halvik.example/submit"),
              "response 200; data from the proxy; finished");
  }
  EXPECT_TRUE(request.starts_with("POST http://diagnostic.halvik.example/submit HTTP/1.1\r\n"))
      << request;
}

TEST(HttpConnection, GoesToWebServersOnly) {
  Events events;
  for (const char* url :
       {"http://a", "https://a.example/b", "HTTPS://A", "http://127.0.0.1:8080/x"}) {
    EXPECT_NE(sendTo(url, events), nullptr) << url;
  }
  for (const char* url : {"", "a.example", "http://", "http:///x", "ftp://a", "file:///x"}) {
    EXPECT_EQ(sendTo(url, events), nullptr) << url;
  }
  EXPECT_EQ(events.seen, "");
}

}  // namespace
}  // namespace platform
