// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Takes a reply of HTTP/1 apart while its bytes arrive. Knows no connection.

#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// What the head of a reply says.
struct HttpReplyHead {
  int statusCode = 0;
  std::string reason;
  /// Where the reply sends its reader on to; absent when it does not.
  std::optional<std::string> location;
};

/// Reads one reply, however its bytes are cut. It takes nothing on trust: a reply that is longer
/// than the bounds, contradicts itself or is not whole has a problem. It holds no more than a head.
class HttpReplyReader {
 public:
  /// For all heads together, as any number of interim replies may precede the one that counts.
  static constexpr std::size_t headBytesMax = 64UL * 1024;
  static constexpr std::size_t bodyBytesMax = 1024UL * 1024;

  /// Takes the next bytes of the connection; returns what they hold of the body. What follows a
  /// reply that is complete, or that has a problem, is dropped.
  std::string feed(std::string_view bytes);

  /// The connection holds no more.
  void end();

  /// The head, once it is complete.
  const std::optional<HttpReplyHead>& head() const { return headRead; }
  bool isComplete() const { return stage == Stage::complete && whyNot.empty(); }
  /// Why this is no whole reply; empty as long as it may be one.
  const std::string& problem() const { return whyNot; }
  /// Whether the problem is a bound of ours or a compressed body, and not a reply that is broken
  /// or cut off.
  bool isRefused() const { return refused; }

 private:
  enum class Stage { statusLine, fields, chunkSize, chunk, chunkEnd, counted, untilEnd, complete };

  bool takeLine(std::string_view& bytes, std::size_t bytesMax, const char* whenLonger);
  void readHeadLine();
  void readStatusLine();
  void readField();
  void finishHead();
  void chooseBody();
  void readChunkLine();
  std::string_view takeBody(std::string_view& bytes);
  void fail(const std::string& why);
  void refuse(const std::string& why);

  Stage stage = Stage::statusLine;
  std::string line;
  std::size_t headBytes = 0;
  HttpReplyHead current;
  std::map<std::string, std::string> fields;
  std::optional<HttpReplyHead> headRead;
  /// Of the body, or of the chunk that is being read.
  std::uint64_t bytesMissing = 0;
  std::size_t bodyBytes = 0;
  std::string whyNot;
  bool refused = false;
};

}  // namespace platform
