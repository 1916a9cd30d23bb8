// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// One upload has one outcome, however long its client lives on.

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "report/http.h"
#include "support/event_loop.h"
#include "support/http_server.h"

namespace report {
namespace {

using support::HttpServer;
using support::ServerConnection;

struct Counted final : HttpProtocol {
  void onHttpDone(const Http& /*client*/) override { ++calls; }
  void onHttpError(const Http& /*client*/) override { ++calls; }
  int calls = 0;
};

// Sends `bytes` and then keeps the connection open.
HttpServer::Behaviour hold(const std::string& bytes) {
  return [bytes](const ServerConnection& connection) {
    connection.readRequest();
    connection.send(bytes);
    connection.waitForClose();
  };
}

TEST(HttpOnce, NoSecondOutcomeComesInALaterTurn) {
  constexpr std::chrono::milliseconds limit{50};
  // Longer than any limit of the others: a reply may take ten times as long as it may stand still.
  constexpr std::chrono::milliseconds longer = 14 * limit;
  const std::string half = "HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nhttp";
  const std::vector<HttpServer::Behaviour> behaviours{
      support::answer(support::reply("200 OK", "url")),
      hold(support::reply("200 OK", "url")),
      support::answer("HTTP/1.1 200 OK\r\n\r\nurl"),
      support::answer(support::reply("200 OK", "")),
      support::answer(support::reply("404 Not Found", "gone")),
      support::answer(support::reply("200 OK", "url") + "more than was promised"),
      support::answer(half),
      support::answer("no HTTP"),
      support::answer(""),
      hold(half),
      hold(""),
  };
  std::vector<std::unique_ptr<HttpServer>> servers;
  std::vector<Counted> outcomes(behaviours.size());
  std::vector<std::unique_ptr<Http>> clients;
  for (std::size_t i = 0; i < behaviours.size(); ++i) {
    servers.push_back(std::make_unique<HttpServer>(std::vector{behaviours[i]}));
    clients.push_back(std::make_unique<Http>(support::eventLoop(), servers[i]->url(), "data",
                                             outcomes[i], limit));
  }
  for (const Counted& outcome : outcomes) {
    support::turnUntil([&] { return outcome.calls > 0; });
  }
  const HttpServer silent({hold("")});
  Counted last;
  const Http waits(support::eventLoop(), silent.url(), "data", last, longer);
  support::turnUntil([&] { return last.calls > 0; });
  for (std::size_t i = 0; i < outcomes.size(); ++i) {
    EXPECT_EQ(outcomes[i].calls, 1) << i;
  }
}

TEST(HttpOnce, NoSecondOutcomeComesWhereTheFirstCameAtOnce) {
  Counted outcome;
  const Http client(support::eventLoop(), "", "data", outcome);
  EXPECT_EQ(outcome.calls, 1);
  const HttpServer server({support::answer(support::reply("200 OK", "url"))});
  Counted last;
  const Http waits(support::eventLoop(), server.url(), "data", last);
  support::turnUntil([&] { return last.calls > 0; });
  EXPECT_EQ(outcome.calls, 1);
}

}  // namespace
}  // namespace report
