// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/http_reply_reader.h"

#include <algorithm>
#include <charconv>

namespace platform {

namespace {

constexpr std::size_t chunkLineBytesMax = 1024;

constexpr int switchingProtocols = 101;
constexpr int firstFinalStatus = 200;
constexpr int noContent = 204;
constexpr int notModified = 304;

bool isDigit(char character) {
  return character >= '0' && character <= '9';
}

std::string inLowerCase(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(), [](char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                                : character;
  });
  return result;
}

std::string_view withoutBlanksAround(std::string_view text) {
  constexpr std::string_view blanks = " \t";
  const std::size_t start = std::min(text.find_first_not_of(blanks), text.size());
  text.remove_prefix(start);
  return text.substr(0, text.find_last_not_of(blanks) + 1);
}

// The whole text as a number; none when it is anything else, or too large for one.
std::optional<std::uint64_t> toNumber(std::string_view text, int base) {
  std::uint64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, failed] = std::from_chars(text.data(), end, number, base);
  return failed == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

}  // namespace

std::string HttpReplyReader::feed(std::string_view bytes) {
  std::string body;
  while (!bytes.empty() && whyNot.empty() && stage != Stage::complete) {
    switch (stage) {
      case Stage::statusLine:
      case Stage::fields:
        if (takeLine(bytes, headBytesMax - headBytes, "its head is too long")) {
          readHeadLine();
        }
        break;
      case Stage::chunkSize:
      case Stage::chunkEnd:
        if (takeLine(bytes, chunkLineBytesMax, "the size of a chunk is too long")) {
          readChunkLine();
        }
        break;
      default:
        body += takeBody(bytes);
    }
  }
  return body;
}

void HttpReplyReader::end() {
  if (!whyNot.empty()) {
    return;
  }
  if (stage == Stage::untilEnd) {
    stage = Stage::complete;
  } else if (stage == Stage::statusLine && headBytes + line.size() == 0) {
    fail("the connection was closed without one");
  } else if (stage != Stage::complete) {
    fail("it breaks off");
  }
}

// True when `line` holds a whole line. Whoever has read it empties it.
bool HttpReplyReader::takeLine(std::string_view& bytes, std::size_t bytesMax,
                               const char* whenLonger) {
  const std::size_t feedAt = bytes.find('\n');
  const bool isWhole = feedAt != std::string_view::npos;
  const std::size_t count = isWhole ? feedAt + 1 : bytes.size();
  if (line.size() + count > bytesMax) {
    refuse(whenLonger);
    return false;
  }
  line += bytes.substr(0, count);
  bytes.remove_prefix(count);
  return isWhole;
}

void HttpReplyReader::readHeadLine() {
  headBytes += line.size();
  line.resize(line.size() - (line.ends_with("\r\n") ? 2 : 1));
  if (stage == Stage::statusLine) {
    readStatusLine();
  } else if (line.empty()) {
    finishHead();
  } else {
    readField();
  }
  line.clear();
}

void HttpReplyReader::readStatusLine() {
  // "HTTP/1.1 200 Reason", of which the reason may be missing with the blank before it.
  constexpr std::size_t statusAt = 9;
  constexpr std::size_t reasonAt = 13;
  const bool isOne = line.starts_with("HTTP/1.") && line.size() >= reasonAt - 1 &&
                     isDigit(line[statusAt - 2]) && line[statusAt - 1] == ' ' &&
                     line[statusAt] != '0' &&
                     std::all_of(line.begin() + statusAt, line.begin() + reasonAt - 1, isDigit) &&
                     (line.size() < reasonAt || line[reasonAt - 1] == ' ');
  if (!isOne) {
    fail("what came is none of HTTP/1");
    return;
  }
  current = {.statusCode = std::stoi(line.substr(statusAt, 3)),
             .reason = line.size() > reasonAt ? line.substr(reasonAt) : "",
             .location = std::nullopt};
  stage = Stage::fields;
}

void HttpReplyReader::readField() {
  const std::size_t colon = line.find(':');
  if (colon == std::string::npos) {
    return;
  }
  const std::string name = inLowerCase(line.substr(0, colon));
  const bool counts = name == "content-length" || name == "transfer-encoding" ||
                      name == "content-encoding" || name == "location";
  if (!counts) {
    return;
  }
  const std::string value(withoutBlanksAround(std::string_view(line).substr(colon + 1)));
  if (const auto [known, isNew] = fields.emplace(name, value); !isNew && known->second != value) {
    fail("it contradicts itself in " + name);
  }
}

void HttpReplyReader::finishHead() {
  if (current.statusCode == switchingProtocols) {
    fail("it switches to a protocol that nobody asked for");
  } else if (current.statusCode < firstFinalStatus) {
    fields.clear();
    stage = Stage::statusLine;
  } else {
    if (const auto location = fields.find("location"); location != fields.end()) {
      current.location = location->second;
    }
    headRead = current;
    chooseBody();
  }
}

void HttpReplyReader::chooseBody() {
  if (current.statusCode == noContent || current.statusCode == notModified) {
    stage = Stage::complete;
  } else if (const std::string coding = inLowerCase(fields["content-encoding"]);
             !coding.empty() && coding != "identity") {
    refuse("it is compressed, which nobody asked for");
  } else if (const std::string transfer = inLowerCase(fields["transfer-encoding"]);
             !transfer.empty()) {
    stage = Stage::chunkSize;
    if (transfer != "chunked") {
      fail("its transfer encoding is unknown");
    }
  } else if (const auto length = fields.find("content-length"); length != fields.end()) {
    const std::optional<std::uint64_t> number = toNumber(length->second, 10);
    bytesMissing = number.value_or(0);
    stage = bytesMissing == 0 ? Stage::complete : Stage::counted;
    if (!number) {
      fail("its length is no number");
    }
  } else {
    stage = Stage::untilEnd;
  }
}

void HttpReplyReader::readChunkLine() {
  line.resize(line.size() - (line.ends_with("\r\n") ? 2 : 1));
  if (stage == Stage::chunkEnd) {
    stage = Stage::chunkSize;
    if (!line.empty()) {
      fail("a chunk is longer than it says");
    }
  } else {
    const std::string_view size = std::string_view(line).substr(0, line.find(';'));
    const std::optional<std::uint64_t> number = toNumber(withoutBlanksAround(size), 16);
    bytesMissing = number.value_or(0);
    // What may follow the last chunk is no part of the body.
    stage = bytesMissing == 0 ? Stage::complete : Stage::chunk;
    if (!number) {
      fail("the size of a chunk is no number");
    }
  }
  line.clear();
}

std::string_view HttpReplyReader::takeBody(std::string_view& bytes) {
  const bool isEndless = stage == Stage::untilEnd;
  const std::size_t count =
      isEndless ? bytes.size()
                : static_cast<std::size_t>(std::min<std::uint64_t>(bytes.size(), bytesMissing));
  const std::string_view taken = bytes.substr(0, count);
  bytes.remove_prefix(count);
  bodyBytes += count;
  if (bodyBytes > bodyBytesMax) {
    refuse("it is longer than " + std::to_string(bodyBytesMax) + " bytes");
    return {};
  }
  if (!isEndless) {
    bytesMissing -= count;
    if (bytesMissing == 0) {
      stage = stage == Stage::chunk ? Stage::chunkEnd : Stage::complete;
    }
  }
  return taken;
}

void HttpReplyReader::fail(const std::string& why) {
  whyNot = why;
}

void HttpReplyReader::refuse(const std::string& why) {
  refused = true;
  fail(why);
}

}  // namespace platform
