// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Input: steps as of takeSteps, and what a server sends, to be unfolded, before it closes the
// connection. Properties: what is read does not depend on how the bytes arrive; nothing is taken
// behind the end; what has failed or is whole stays so; and whatever a library takes for a whole
// reply as well has the same status and body for it.

#include <http_parser.h>

#include <algorithm>
#include <string>
#include <vector>

#include "fuzz/support.h"
#include "platform/http_reply_reader.h"

namespace {

using platform::HttpReplyReader;

struct Reading {
  void feed(std::string_view bytes) {
    const bool hadEnded = reader.isComplete() || !reader.problem().empty();
    const bool hadHead = reader.head().has_value();
    const std::string more = reader.feed(bytes);
    body += more;
    fuzz::check(!hadEnded || more.empty(), "nothing is taken behind the end");
    fuzz::check(!hadHead || reader.head(), "a head stays");
    fuzz::check(more.empty() || reader.head(), "a body has a head");
    fuzz::check(!reader.isComplete() || reader.problem().empty(), "what has failed is not whole");
  }

  HttpReplyReader reader;
  std::string body;
};

Reading readAtOnce(std::string_view bytes) {
  Reading reading;
  reading.feed(bytes);
  reading.reader.end();
  return reading;
}

Reading readInSteps(std::string_view bytes, const std::vector<std::size_t>& steps) {
  Reading reading;
  for (const std::size_t step : steps) {
    const std::size_t size = std::min(step, bytes.size());
    reading.feed(fuzz::ExactCopy(bytes.substr(0, size)).view());
    bytes.remove_prefix(size);
  }
  reading.feed(bytes);
  reading.reader.end();
  return reading;
}

Reading readByteByByte(std::string_view bytes) {
  Reading reading;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    reading.feed(bytes.substr(i, 1));
  }
  reading.reader.end();
  return reading;
}

void checkSame(const Reading& one, const Reading& other) {
  fuzz::check(one.reader.problem() == other.reader.problem(), "a problem is one however it comes");
  fuzz::check(one.reader.isComplete() == other.reader.isComplete(), "so is what is whole");
  fuzz::check(one.reader.head().has_value() == other.reader.head().has_value(), "so is a head");
  if (one.reader.head()) {
    fuzz::check(one.reader.head()->statusCode == other.reader.head()->statusCode &&
                    one.reader.head()->reason == other.reader.head()->reason &&
                    one.reader.head()->location == other.reader.head()->location,
                "so is what it holds");
  }
  // What is handed on before a problem shows depends on when it shows.
  fuzz::check(!one.reader.isComplete() || one.body == other.body, "so is a body");
}

// The library's own reading of the first reply that is no interim one.
struct LibraryReading {
  explicit LibraryReading(std::string_view bytes) {
    http_parser_init(&parser, HTTP_RESPONSE);
    parser.data = this;
    http_parser_settings settings;
    http_parser_settings_init(&settings);
    settings.on_body = [](http_parser* of, const char* at, std::size_t length) {
      static_cast<LibraryReading*>(of->data)->body.append(at, length);
      return 0;
    };
    settings.on_message_complete = [](http_parser* of) {
      constexpr unsigned firstFinalStatus = 200;
      if (of->status_code >= firstFinalStatus) {
        static_cast<LibraryReading*>(of->data)->isWhole = true;
        http_parser_pause(of, 1);
      }
      return 0;
    };
    http_parser_execute(&parser, &settings, bytes.data(), bytes.size());
    if (!isWhole && HTTP_PARSER_ERRNO(&parser) == HPE_OK) {
      http_parser_execute(&parser, &settings, nullptr, 0);
    }
  }

  http_parser parser;
  std::string body;
  bool isWhole = false;
};

// The library takes a carriage return by itself for the end of a line, and a tab for a part of what
// it follows.
bool isReadAlike(std::string_view bytes) {
  for (std::size_t i = bytes.find('\r'); i != std::string_view::npos; i = bytes.find('\r', i + 1)) {
    if (bytes.substr(i + 1, 1) != "\n") {
      return false;
    }
  }
  return bytes.find('\t') == std::string_view::npos;
}

// Beside what the library takes for a whole reply.
void checkSame(const Reading& own, const LibraryReading& library) {
  fuzz::check(own.reader.problem() != "it breaks off", "no end of it is overlooked");
  if (own.reader.isComplete()) {
    fuzz::check(static_cast<unsigned>(own.reader.head()->statusCode) == library.parser.status_code,
                "a library reads the same status");
    // The library gives these a body when they come in an unknown encoding.
    constexpr int noContent = 204;
    constexpr int notModified = 304;
    const int status = own.reader.head()->statusCode;
    fuzz::check(status == noContent || status == notModified || own.body == library.body,
                "a library reads the same body");
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view input = fuzz::asText(data, size);
  const std::vector<std::size_t> steps = fuzz::takeSteps(input);
  const fuzz::ExactCopy copy(fuzz::unfold(input, 2 * HttpReplyReader::headBytesMax));
  const std::string_view bytes = copy.view();
  const Reading atOnce = readAtOnce(bytes);
  checkSame(atOnce, readInSteps(bytes, steps));
  checkSame(atOnce, readByteByByte(bytes));
  const LibraryReading library(bytes);
  if (library.isWhole && isReadAlike(bytes)) {
    checkSame(atOnce, library);
  }
  return 0;
}
