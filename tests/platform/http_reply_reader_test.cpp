// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/http_reply_reader.h"

#include <gtest/gtest.h>

#include <vector>

namespace platform {
namespace {

struct Outcome {
  bool hasHead = false;
  int statusCode = 0;
  std::string body;
  bool isComplete = false;
  std::string problem;
};

// Reads `bytes` in pieces of the given size, as of a connection that is then closed, or is not.
Outcome read(const std::string& bytes, std::size_t pieceBytes, bool isClosed) {
  HttpReplyReader reader;
  std::string body;
  for (std::size_t at = 0; at < bytes.size(); at += pieceBytes) {
    body += reader.feed(std::string_view(bytes).substr(at, pieceBytes));
  }
  if (isClosed) {
    reader.end();
  }
  return {.hasHead = reader.head().has_value(),
          .statusCode = reader.head() ? reader.head()->statusCode : 0,
          .body = body,
          .isComplete = reader.isComplete(),
          .problem = reader.problem()};
}

const std::string ok = "HTTP/1.1 200 OK\r\n";
const std::string chunked = ok + "Transfer-Encoding: chunked\r\n\r\n";

// However the bytes are cut, what comes of them is the same.
Outcome readAnyhow(const std::string& bytes, bool isClosed) {
  const Outcome whole = read(bytes, bytes.size() + 1, isClosed);
  for (const std::size_t pieceBytes : {1, 2, 3, 7}) {
    const Outcome cut = read(bytes, pieceBytes, isClosed);
    EXPECT_EQ(cut.hasHead, whole.hasHead) << bytes;
    EXPECT_EQ(cut.statusCode, whole.statusCode) << bytes;
    EXPECT_EQ(cut.isComplete, whole.isComplete) << bytes;
    EXPECT_EQ(cut.problem, whole.problem) << bytes;
    if (whole.problem.empty()) {
      EXPECT_EQ(cut.body, whole.body) << bytes;
    }
  }
  return whole;
}

TEST(HttpReplyReader, TellsTheFirstProblem) {
  HttpReplyReader reader;
  reader.feed("SSH-2.0\r\n");
  const std::string problem = reader.problem();
  EXPECT_NE(problem, "");
  reader.feed(ok + "Content-Length: x\r\n\r\n");
  reader.end();
  EXPECT_EQ(reader.problem(), problem);
}

TEST(HttpReplyReader, ReadsAWholeReply) {
  const std::vector<std::pair<std::string, std::string>> replies{
      {ok + "Content-Length: 3\r\n\r\nurl", "url"},
      {ok + "content-LENGTH:3 \t\r\n\r\nurl", "url"},
      {ok + "Content-Length: 3\r\nContent-Length: 3\r\n\r\nurl", "url"},
      {ok + "Content-Length: 3\r\n\r\nurl and what is no part of it", "url"},
      {ok + "Content-Length: 0\r\n\r\n", ""},
      {"HTTP/1.0 200\nContent-Length: 3\n\nurl", "url"},
      {ok + "no field\r\n: nameless\r\nContent-Length: 3\r\n\r\nurl", "url"},
      {ok + "Content-Encoding: identity\r\nContent-Length: 3\r\n\r\nurl", "url"},
      {"HTTP/1.1 204 No Content\r\nContent-Length: 3\r\n\r\n", ""},
      {chunked + "3\r\nurl\r\n0\r\n\r\n", "url"},
      {chunked + "2;x=y\r\nur\r\n01 \r\nl\r\n0\r\nField: x\r\n\r\n", "url"},
      {chunked + "A\r\n0123456789\r\n0\r\n\r\n", "0123456789"},
      {ok + "Content-Length: 9\r\nTransfer-Encoding: Chunked\r\n\r\n3\r\nurl\r\n0\r\n\r\n", "url"},
      {"HTTP/1.1 100 Continue\r\nContent-Length: 9\r\n\r\nHTTP/1.1 103 Early Hints\r\nLink: x\r\n"
       "\r\n" +
           ok + "Content-Length: 3\r\n\r\nurl",
       "url"},
  };
  for (const auto& [bytes, body] : replies) {
    for (const bool isClosed : {false, true}) {
      const Outcome outcome = readAnyhow(bytes, isClosed);
      EXPECT_TRUE(outcome.isComplete) << bytes;
      EXPECT_EQ(outcome.problem, "") << bytes;
      EXPECT_EQ(outcome.body, body) << bytes;
    }
  }
}

TEST(HttpReplyReader, TakesAReplyWithoutALengthForWholeWhenTheConnectionEnds) {
  EXPECT_FALSE(readAnyhow(ok + "\r\nurl", false).isComplete);
  const Outcome outcome = readAnyhow(ok + "\r\nurl", true);
  EXPECT_TRUE(outcome.isComplete);
  EXPECT_EQ(outcome.body, "url");
}

TEST(HttpReplyReader, KnowsWhatTheHeadSays) {
  HttpReplyReader reader;
  reader.feed("HTTP/1.1 302 Found it there\r\nLOCATION:  /page \r\nContent-Length: 1\r\n\r\n");
  ASSERT_TRUE(reader.head());
  EXPECT_EQ(reader.head()->statusCode, 302);
  EXPECT_EQ(reader.head()->reason, "Found it there");
  EXPECT_EQ(reader.head()->location, "/page");
  HttpReplyReader other;
  other.feed("HTTP/1.1 999\r\n\r\n");
  ASSERT_TRUE(other.head());
  EXPECT_EQ(other.head()->statusCode, 999);
  EXPECT_EQ(other.head()->reason, "");
  EXPECT_EQ(other.head()->location, std::nullopt);
}

TEST(HttpReplyReader, NeverTakesAReplyThatBreaksOffForAWholeOne) {
  for (const std::string& bytes :
       {ok + "Content-Length: 30\r\n\r\nhttps://results.example/1", chunked + "1E\r\nhttps://r",
        chunked + "3\r\nurl\r\n1E\r\nhttps://results.example/page/1\r\n"}) {
    for (std::size_t length = 0; length <= bytes.size(); ++length) {
      const Outcome outcome = read(bytes.substr(0, length), 5, true);
      EXPECT_FALSE(outcome.isComplete) << bytes.substr(0, length);
      EXPECT_EQ(outcome.problem,
                length == 0 ? "the connection was closed without one" : "it breaks off");
    }
  }
}

TEST(HttpReplyReader, RefusesWhatIsNoReply) {
  const std::vector<std::pair<std::string, std::string>> replies{
      {"220 mail.example ESMTP\r\n", "what came is none of HTTP/1"},
      {"\r\n", "what came is none of HTTP/1"},
      {"HTTP/1.1 20\r\n", "what came is none of HTTP/1"},
      {"HTTP/1.1 -20 OK\r\n", "what came is none of HTTP/1"},
      {"HTTP/1.1 099 OK\r\n", "what came is none of HTTP/1"},
      {"HTTP/1.1 2000 OK\r\n", "what came is none of HTTP/1"},
      {"HTTP/1.x 200 OK\r\n", "what came is none of HTTP/1"},
      {"HTTP/2 200 OK\r\n", "what came is none of HTTP/1"},
      {"HTTP/1.1 101 Switching\r\n\r\n", "it switches to a protocol that nobody asked for"},
      {ok + "Content-Length: 3\r\nContent-Length: 4\r\n\r\nurl",
       "it contradicts itself in content-length"},
      {ok + "Location: /a\r\nlocation: /b\r\n\r\n", "it contradicts itself in location"},
      {ok + "Content-Length: three\r\n\r\nurl", "its length is no number"},
      {ok + "Content-Length: -3\r\n\r\nurl", "its length is no number"},
      {ok + "Content-Length: 3, 3\r\n\r\nurl", "its length is no number"},
      {ok + "Content-Length:\r\n\r\nurl", "its length is no number"},
      {ok + "Content-Length: 99999999999999999999999\r\n\r\nurl", "its length is no number"},
      {ok + "Content-Encoding: gzip\r\n\r\n\x1f\x8b", "it is compressed, which nobody asked for"},
      {ok + "Transfer-Encoding: gzip, chunked\r\n\r\n", "its transfer encoding is unknown"},
      {chunked + "zz\r\nurl\r\n", "the size of a chunk is no number"},
      {chunked + "-3\r\nurl\r\n", "the size of a chunk is no number"},
      {chunked + "\r\n", "the size of a chunk is no number"},
      {chunked + "10000000000000000\r\n", "the size of a chunk is no number"},
      {chunked + "2\r\nurl\r\n", "a chunk is longer than it says"},
  };
  for (const auto& [bytes, problem] : replies) {
    const Outcome outcome = readAnyhow(bytes, false);
    EXPECT_EQ(outcome.problem, problem) << bytes;
    EXPECT_FALSE(outcome.isComplete) << bytes;
  }
}

// Feeds the same piece for ever; how many bytes it took until the reader had a problem.
std::size_t endless(const std::string& start, const std::string& piece, std::string& problem) {
  HttpReplyReader reader;
  reader.feed(start);
  std::size_t bytes = start.size();
  while (reader.problem().empty() && bytes < 100UL * 1024 * 1024) {
    EXPECT_FALSE(reader.isComplete());
    reader.feed(piece);
    bytes += piece.size();
  }
  problem = reader.problem();
  return bytes;
}

TEST(HttpReplyReader, EndsWhatNeverEnds) {
  struct Case {
    std::string start;
    std::string piece;
    std::string problem;
    std::size_t bytesMax;
  };
  const std::size_t head = HttpReplyReader::headBytesMax;
  const std::size_t body = HttpReplyReader::bodyBytesMax;
  const std::vector<Case> cases{
      {"HTTP/1.1 200 ", "x", "its head is too long", head},
      {ok + "X: ", "x", "its head is too long", head},
      {ok, "X: y\r\n", "its head is too long", head},
      {"", "HTTP/1.1 100 Continue\r\n\r\n", "its head is too long", head},
      {ok + "\r\n", "x", "it is longer than 1048576 bytes", body},
      {ok + "Content-Length: 18446744073709551615\r\n\r\n", "x", "it is longer than 1048576 bytes",
       body},
      {chunked, "1\r\nx\r\n", "it is longer than 1048576 bytes", 6 * body},
      {chunked + "ffffffffffffffff\r\n", "x", "it is longer than 1048576 bytes", body},
      {chunked, "0", "the size of a chunk is too long", 1024},
      {chunked + "1;", "x", "the size of a chunk is too long", 1024},
      {chunked + "1\r\nx", "\r", "the size of a chunk is too long", 1024},
  };
  for (const Case& one : cases) {
    std::string problem;
    const std::size_t bytes = endless(one.start, one.piece, problem);
    EXPECT_EQ(problem, one.problem) << one.start << one.piece;
    EXPECT_LE(bytes, one.bytesMax + one.start.size() + one.piece.size()) << one.start << one.piece;
  }
}

TEST(HttpReplyReader, TakesAReplyUpToItsBounds) {
  const std::string body(HttpReplyReader::bodyBytesMax, 'x');
  EXPECT_EQ(read(ok + "\r\n" + body, 1000, true).body, body);
  EXPECT_NE(read(ok + "\r\n" + body + 'x', 1000, true).problem, "");
  const std::string rest = "\r\nContent-Length: 1\r\n\r\n";
  const std::string field(HttpReplyReader::headBytesMax - ok.size() - 3 - rest.size(), 'x');
  EXPECT_TRUE(read(ok + "X: " + field + rest + "u", 1000, false).isComplete);
  EXPECT_NE(read(ok + "X: " + field + 'x' + rest + "u", 1000, false).problem, "");
}

}  // namespace
}  // namespace platform
