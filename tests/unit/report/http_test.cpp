// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "report/http.h"

#include <gtest/gtest.h>

#include "support/event_loop.h"
#include "support/http_server.h"

namespace report {
namespace {

using support::HttpServer;
using support::ServerConnection;

struct Outcome final : HttpProtocol {
  void onHttpDone(const Http& client) override { record("done", client); }
  void onHttpError(const Http& client) override { record("error", client); }

  void record(const char* callback, const Http& client) {
    ++calls;
    name = callback;
    didResponseSucceed = client.didResponseSucceed();
    responseCode = client.responseCode();
    reply = client.reply();
  }

  int calls = 0;
  std::string name;
  bool didResponseSucceed = false;
  std::int64_t responseCode = -1;
  std::optional<std::string> reply;
};

constexpr std::chrono::milliseconds patient{60'000};

Outcome upload(const std::string& url, const std::string& data,
               std::chrono::milliseconds stallLimit = patient) {
  Outcome outcome;
  const Http client(support::eventLoop(), url, data, outcome, stallLimit);
  support::turnUntil([&] { return outcome.calls > 0; });
  EXPECT_EQ(outcome.calls, 1);
  return outcome;
}

TEST(Http, PostsTheDataAsAFormWithOneFile) {
  std::string request;
  const std::string data("every\0byte\r\n--0xKhTmLbOuNdArY--\r\n\xff", 33);
  const Outcome outcome = [&] {
    const HttpServer server({[&](const ServerConnection& connection) {
      request = connection.readRequest();
      connection.send(support::reply("200 OK", "https://results.example/1"));
    }});
    return upload(server.url("/diagnosticsubmit?x=1"), data);
  }();
  EXPECT_EQ(outcome.name, "done");
  EXPECT_EQ(outcome.reply, "https://results.example/1");
  EXPECT_TRUE(request.starts_with("POST /diagnosticsubmit?x=1 HTTP/1.1\r\n")) << request;
  EXPECT_NE(request.find("\r\nContent-Type: multipart/form-data; boundary=0xKhTmLbOuNdArY\r\n"),
            std::string::npos);
  EXPECT_NE(request.find("\r\nContent-Length: " + std::to_string(data.size() + 110) + "\r\n"),
            std::string::npos);
  EXPECT_EQ(request.substr(request.find("\r\n\r\n") + 4),
            "--0xKhTmLbOuNdArY\r\nContent-Disposition: form-data; name=\"file\"; "
            "filename=\"test.bin\"\r\n\r\n" +
                data + "\r\n--0xKhTmLbOuNdArY--\r\n");
}

struct ReplyCase {
  const char* name;
  std::string bytes;
  const char* callback;
  bool didResponseSucceed;
  std::int64_t responseCode;
  std::optional<std::string> reply;
};

TEST(Http, JudgesAReplyByItsBodyAndItsStatus) {
  const std::vector<ReplyCase> cases{
      {"200", support::reply("200 OK", "url"), "done", true, 200, "url"},
      {"200 empty", support::reply("200 OK", ""), "error", false, 0, std::nullopt},
      {"204", "HTTP/1.1 204 No Content\r\n\r\n", "error", false, 0, std::nullopt},
      {"200 not UTF-8", support::reply("200 OK", "\xff"), "done", true, 200, std::nullopt},
      {"300", support::reply("300 Multiple Choices", "url"), "done", true, 300, "url"},
      {"302 to nowhere", support::reply("302 Found", "moved"), "done", true, 302, "moved"},
      {"399", support::reply("399 Odd", "url"), "done", true, 399, "url"},
      {"400", support::reply("400 Bad Request", "x"), "error", false, 400, "x"},
      {"401", support::reply("401 Unauthorized", "x"), "error", false, 401, "x"},
      {"404", support::reply("404 Not Found", "gone"), "error", false, 404, "gone"},
      {"404 empty", support::reply("404 Not Found", ""), "error", false, 0, std::nullopt},
      {"418", support::reply("418 Teapot", "tea"), "error", false, 418, "tea"},
      {"500", support::reply("500 Oops", "sorry"), "error", false, 500, "sorry"},
      {"500 empty", support::reply("500 Oops", ""), "error", false, 0, std::nullopt},
      {"without a length", "HTTP/1.1 200 OK\r\n\r\nurl", "done", true, 200, "url"},
      {"closed before the head", "", "error", false, 0, std::nullopt},
      {"closed inside the head", "HTTP/1.1 200 OK\r\nContent-", "error", false, 0, std::nullopt},
      {"closed behind the head", "HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n", "error", false, 0,
       std::nullopt},
      {"closed inside the body", "HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nhttp", "error", true,
       200, "http"},
      {"closed inside a 404", "HTTP/1.1 404 Not Found\r\nContent-Length: 9\r\n\r\ngone", "error",
       false, 404, "gone"},
      {"chunked", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nurl\r\n0\r\n\r\n",
       "done", true, 200, "url"},
      {"closed inside a chunk", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n9\r\nhttp",
       "error", true, 200, "http"},
      {"closed between chunks",
       "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n4\r\nhttp\r\n", "error", true, 200,
       "http"},
      {"no HTTP at all", "SSH-2.0-x\r\n\r\n", "error", false, 0, std::nullopt},
  };
  for (const ReplyCase& one : cases) {
    const HttpServer server({support::answer(one.bytes)});
    const Outcome outcome = upload(server.url(), "data");
    EXPECT_EQ(outcome.name, one.callback) << one.name;
    EXPECT_EQ(outcome.didResponseSucceed, one.didResponseSucceed) << one.name;
    EXPECT_EQ(outcome.responseCode, one.responseCode) << one.name;
    EXPECT_EQ(outcome.reply, one.reply) << one.name;
  }
}

// Serves a reply in two pieces, the second one after the client has handled the first.
class TwoPieces {
 public:
  Outcome upload(const std::string& first, const std::string& second) {
    const HttpServer server({[&](const ServerConnection& connection) {
      connection.readRequest();
      connection.send(support::reply("200 OK", first + second)
                          .substr(0, headSize(first + second) + first.size()));
      firstHandled.get_future().wait();
      connection.send(second);
    }});
    Outcome outcome;
    const Http client(support::eventLoop(), server.url(), "data", outcome, patient);
    support::turnUntil([&] { return client.reply().has_value(); });
    EXPECT_EQ(client.reply(), first);
    EXPECT_EQ(outcome.calls, 0);
    firstHandled.set_value();
    support::turnUntil([&] { return outcome.calls > 0; });
    return outcome;
  }

 private:
  static std::size_t headSize(const std::string& body) {
    return support::reply("200 OK", body).size() - body.size();
  }

  std::promise<void> firstHandled;
};

TEST(Http, LogsThatAReplyWasEmpty) {
  HttpServer server({support::answer(support::reply("200 OK", ""))});
  testing::internal::CaptureStderr();
  upload(server.url(), "report");
  EXPECT_TRUE(testing::internal::GetCapturedStderr().ends_with("] sending to " + server.url() +
                                                               " failed: the reply is empty\n"));
}

TEST(Http, KeepsTheLastPieceOfTheReplyOnly) {
  const Outcome outcome = TwoPieces().upload("https://", "results.example/2");
  EXPECT_EQ(outcome.name, "done");
  EXPECT_EQ(outcome.reply, "results.example/2");
}

TEST(Http, DecodesEachPieceByItself) {
  const Outcome outcome = TwoPieces().upload("caf\xC3\xA9", "\xC3");
  EXPECT_EQ(outcome.name, "done");
  EXPECT_EQ(outcome.reply, std::nullopt);
}

TEST(Http, FetchesThePageBehindARedirect) {
  for (const char* status : {"301 Moved", "302 Found", "303 See Other"}) {
    std::string second;
    const Outcome outcome = [&] {
      const HttpServer server(
          {support::answer(support::reply(status, "moved", "Location: /page\r\n")),
           [&](const ServerConnection& connection) {
             second = connection.readRequest();
             connection.send(support::reply("200 OK", "page"));
           }});
      return upload(server.url(), "data");
    }();
    EXPECT_EQ(outcome.name, "done") << status;
    EXPECT_EQ(outcome.reply, "page") << status;
    EXPECT_TRUE(second.starts_with("GET /page ")) << second;
  }
}

TEST(Http, FollowsARedirectToAnEncodedAddress) {
  std::string second;
  const Outcome outcome = [&] {
    const HttpServer server(
        {support::answer(support::reply("302 Found", "", "Location: /a%20page?x=%2F\r\n")),
         [&](const ServerConnection& connection) {
           second = connection.readRequest();
           connection.send(support::reply("200 OK", "page"));
         }});
    return upload(server.url(), "data");
  }();
  EXPECT_EQ(outcome.name, "done");
  EXPECT_TRUE(second.starts_with("GET /a%20page?x=%2F ")) << second;
}

TEST(Http, NeverTakesAReplyThatBreaksOffForAWholeOne) {
  // The end of the data and that of the connection are seen in either order: often enough for both
  // to occur.
  for (const char* bytes : {"HTTP/1.1 200 OK\r\nContent-Length: 99\r\n\r\nhttps://",
                            "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n8\r\nhttps://"}) {
    const HttpServer server({support::answer(bytes)});
    for (int i = 0; i < 100; ++i) {
      ASSERT_EQ(upload(server.url(), "data").name, "error");
    }
  }
}

TEST(Http, RefusesACompressedReply) {
  const std::string packed(
      "\x1f\x8b\x08\x00\x00\x00\x00\x00\x02\x03\xcb\x28\x29\x29\x28\xb6\xd2\xd7\x2f\xd2\x4b\xad\x48"
      "\xcc\x2d\xc8\x49\xd5\x37\x04\x00\x2c\xf7\x98\xa0\x13\x00\x00\x00",
      39);
  for (const char* headers : {"Content-Encoding: gzip\r\n", "Transfer-Encoding: gzip\r\n",
                              "Content-Encoding: identity\r\nContent-Encoding: gzip\r\n"}) {
    const HttpServer server({support::answer(support::reply("200 OK", packed, headers))});
    const Outcome outcome = upload(server.url(), "data");
    EXPECT_EQ(outcome.name, "error") << headers;
    EXPECT_EQ(outcome.reply, std::nullopt) << headers;
  }
}

TEST(Http, TakesAReplyThatIsSaidNotToBeCompressed) {
  for (const char* headers : {"Content-Encoding: identity\r\n", "Content-Encoding: Identity\r\n"}) {
    const HttpServer server({support::answer(support::reply("200 OK", "url", headers))});
    EXPECT_EQ(upload(server.url(), "data").reply, "url") << headers;
  }
}

TEST(Http, GivesUpOnRedirectsThatGoInACircle) {
  int requests = 0;
  const Outcome outcome = [&] {
    const HttpServer server({[&](const ServerConnection& connection) {
      connection.readRequest();
      ++requests;
      connection.send(support::reply("302 Found", "round", "Location: /again\r\n"));
    }});
    return upload(server.url(), "data");
  }();
  EXPECT_EQ(outcome.name, "error");
  EXPECT_FALSE(outcome.didResponseSucceed);
  EXPECT_EQ(requests, 21);
}

TEST(Http, RefusesRedirectsToOtherSchemes) {
  for (const char* target : {"file:///etc/hostname", "ftp://127.0.0.1/x", "http://"}) {
    const HttpServer server({support::answer(
        support::reply("302 Found", "moved", std::string("Location: ") + target + "\r\n"))});
    EXPECT_EQ(upload(server.url(), "data").name, "error") << target;
  }
}

TEST(Http, SendsTheDataAgainWhereARedirectAsksForIt) {
  std::string second;
  const Outcome outcome = [&] {
    const HttpServer server(
        {support::answer(support::reply("307 Temporary Redirect", "", "Location: /again\r\n")),
         [&](const ServerConnection& connection) {
           second = connection.readRequest();
           connection.send(support::reply("200 OK", "again"));
         }});
    return upload(server.url(), "data");
  }();
  EXPECT_EQ(outcome.name, "done");
  EXPECT_TRUE(second.starts_with("POST /again ")) << second;
  EXPECT_NE(second.find("\r\n\r\ndata\r\n--0xKhTmLbOuNdArY--\r\n"), std::string::npos);
}

TEST(Http, FailsWithoutAServer) {
  std::string url;
  {
    const HttpServer gone({});
    url = gone.url();
  }
  const Outcome outcome = upload(url, "data");
  EXPECT_EQ(outcome.name, "error");
  EXPECT_EQ(outcome.responseCode, 0);
}

TEST(Http, SendsTheDataOnceToAServerThatClosesWithoutAnAnswer) {
  int requests = 0;
  const Outcome outcome = [&] {
    const HttpServer server({[&](const ServerConnection& connection) {
      connection.readRequest();
      ++requests;
    }});
    return upload(server.url(), "data");
  }();
  EXPECT_EQ(outcome.name, "error");
  EXPECT_EQ(requests, 1);
}

TEST(Http, FailsWhenAReplyTakesTooLongThoughItMoves) {
  const HttpServer server({[](const ServerConnection& connection) {
    connection.readRequest();
    connection.send("HTTP/1.1 200 OK\r\n\r\n");
    // Until the client has closed, a byte whenever it may be waiting for one.
    while (connection.isOpenAfter(std::chrono::milliseconds(20))) {
      connection.send("x");
    }
  }});
  const Outcome outcome = upload(server.url(), "data", std::chrono::milliseconds(200));
  EXPECT_EQ(outcome.name, "error");
  EXPECT_FALSE(outcome.didResponseSucceed);
}

TEST(Http, AReplyThatIsRefusedAfterItsFirstBytesHasNotSucceeded) {
  const std::string rest(2'000'000, 'x');
  const HttpServer server({support::answer("HTTP/1.1 200 OK\r\n\r\nhttp" + rest)});
  const Outcome outcome = upload(server.url(), "data");
  EXPECT_EQ(outcome.name, "error");
  EXPECT_FALSE(outcome.didResponseSucceed);
  EXPECT_EQ(outcome.responseCode, 200);
}

TEST(Http, SucceedsOnlyWithAServerThatHadAllOfTheData) {
  const std::string data(20'000'000, 'x');
  for (const auto& [status, name, code] :
       {std::tuple("200 OK", "error", 0), std::tuple("302 Found", "error", 0),
        std::tuple("413 Too Large", "error", 413)}) {
    const HttpServer server({[&, head = status](const ServerConnection& connection) {
      connection.send(support::reply(head, "https://r.example/1", "Location: /page\r\n"));
      connection.waitForClose();
    }});
    const Outcome outcome = upload(server.url(), data);
    EXPECT_EQ(outcome.name, name) << status;
    EXPECT_EQ(outcome.responseCode, code) << status;
    EXPECT_FALSE(outcome.didResponseSucceed) << status;
  }
}

TEST(Http, FailsWhenNothingMoves) {
  const std::vector<std::string> starts{"", "HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n",
                                        "HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nhttp"};
  for (const std::string& start : starts) {
    const HttpServer server({[&](const ServerConnection& connection) {
      connection.readRequest();
      connection.send(start);
      connection.waitForClose();
    }});
    const Outcome outcome = upload(server.url(), "data", std::chrono::milliseconds(200));
    EXPECT_EQ(outcome.name, "error");
    EXPECT_EQ(outcome.didResponseSucceed, start.ends_with("http"));
  }
}

TEST(Http, WaitsSixtySecondsByItself) {
  EXPECT_EQ(Http::usualStallLimit, patient);
}

TEST(Http, ReportsBeforeItsConstructorReturnsWhenThereIsNothingToSend) {
  Outcome outcome;
  const Http client(support::eventLoop(), "http://127.0.0.1:1/", "", outcome);
  EXPECT_EQ(outcome.name, "error");
  EXPECT_FALSE(outcome.didResponseSucceed);
  EXPECT_EQ(outcome.responseCode, 0);
}

TEST(Http, ReportsBeforeItsConstructorReturnsWhenThereIsNowhereToSendTo) {
  for (const char* url : {"", "no url", "http://", "/diagnosticsubmit", "ftp://127.0.0.1/"}) {
    Outcome outcome;
    const Http client(support::eventLoop(), url, "data", outcome);
    EXPECT_EQ(outcome.name, "error") << url;
  }
}

TEST(Http, SendsALargeReportWhole) {
  const std::string data(20'000'000, 'x');
  std::size_t received = 0;
  const Outcome outcome = [&] {
    const HttpServer server({[&](const ServerConnection& connection) {
      const std::string request = connection.readRequest();
      received = request.size() - request.find("\r\n\r\n") - 4;
      connection.send(support::reply("200 OK", "url"));
    }});
    return upload(server.url(), data);
  }();
  EXPECT_EQ(outcome.name, "done");
  EXPECT_EQ(received, data.size() + 110);
}

}  // namespace
}  // namespace report
