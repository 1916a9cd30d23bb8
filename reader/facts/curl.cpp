// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// What `curl` prints: a page, the headers alone (-I), or both with what happens in between (-v).

#include "reader/facts/extract.h"

namespace reader {

namespace {

using Kind = WebCheck::Kind;

std::string_view urlIn(std::string_view name) {
  const std::vector<std::string_view> words = wordsOf(name);
  bool isCurl = false;
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (!isCurl) {
      isCurl = words[i].ends_with("/curl");
    } else if (words[i] == "-c" || words[i] == "-m") {
      ++i;
    } else if (!words[i].starts_with('-')) {
      return words[i];
    }
  }
  return {};
}

std::string_view titleIn(std::string_view page) {
  // A title is near the beginning, if there is one.
  constexpr std::size_t beginning = 16384;
  const std::string lower = lowered(page.substr(0, beginning));
  const std::size_t begin = lower.find("<title>");
  const std::size_t end = lower.find("</title>", begin);
  if (begin == std::string::npos || end == std::string::npos) {
    return {};
  }
  return trimmed(page.substr(begin + 7, end - begin - 7));
}

bool isBlockPage(const WebCheck& check, std::string_view page) {
  constexpr std::size_t beginning = 16384;
  return lowered(check.title) == "blocked" ||
         contains(lowered(page.substr(0, beginning)), "is blocked by the halvik filter");
}

bool speaksOfProxy(std::string_view header) {
  const std::string lower = lowered(header);
  for (const std::string_view part :
       {"via: ", "proxy-authenticate: ", "proxy-connection: ", "x-squid-error: "}) {
    if (lower.starts_with(part)) {
      return true;
    }
  }
  return contains(lower, "uses proxy env variable") || contains(lower, "http proxy tunnel");
}

void readHeader(const BlockToRead& block, const Line& line, std::string_view text,
                WebCheck& check) {
  if (text.starts_with("HTTP/")) {
    const std::vector<std::string_view> words = wordsOf(text);
    check.status = words.size() > 1 ? wholeNumber(words[1]) : std::nullopt;
    check.source = block.at(line);
    check.isCached = false;
    return;
  }
  const std::string lower = lowered(text.substr(0, 10));
  if (lower.starts_with("location: ")) {
    check.redirects.push_back(trimmed(text.substr(10)));
  } else if (lower.starts_with("date: ")) {
    check.date = trimmed(text.substr(6));
  } else if (lower.starts_with("age: ")) {
    check.isCached = true;
  }
  if (!check.proxy && speaksOfProxy(text)) {
    check.proxy = block.at(line);
  }
}

/// Standard error of `curl -v`.
void readConversation(const BlockToRead& block, WebCheck& check) {
  for (const Line& line : block.errorLines()) {
    if (const auto header = after(line.text, "< ")) {
      readHeader(block, line, *header, check);
    } else if (contains(line.text, "curl: (")) {
      const std::string_view text = line.text.substr(line.text.find("curl: ("));
      check.error = text;
      check.source = block.at(line);
    } else if (!check.proxy && line.text.starts_with("* ") && speaksOfProxy(line.text)) {
      check.proxy = block.at(line);
    }
  }
}

void readPage(const BlockToRead& block, WebCheck& check) {
  check.title = titleIn(block.block.output());
  check.page = trimmed(block.block.output());
  for (const Line& line : block.outputLines()) {
    if (!trimmed(line.text).empty()) {
      check.text = trimmed(line.text);
      check.source = check.status ? check.source : block.at(line);
      return;
    }
  }
}

/// What the service's own servers answer.
bool isExpectedPage(const WebCheck& check, std::string_view page) {
  if (check.key == "web-block-id") {
    return page.starts_with("block id:");
  }
  if (check.key == "web-monitor") {
    return page.starts_with("monitor: ok");
  }
  if (check.key == "web-block-page") {
    return page.starts_with("block page: ok");
  }
  if (check.key == "web-by-number") {
    return contains(page, "Halvik");
  }
  return check.status == 200 && check.redirects.empty();
}

Kind kindOfHeaders(const WebCheck& check, const diagnostics::Endpoints& endpoints) {
  if (!check.status) {
    return Kind::nothing;
  }
  const bool isAtHome =
      check.redirects.empty() || contains(check.redirects.back(), "://" + endpoints.blockPageHost);
  return isAtHome && *check.status < 400 ? Kind::expected : Kind::otherPage;
}

Kind kindOfPage(const WebCheck& check) {
  if (check.page.empty()) {
    return check.status ? Kind::otherPage : Kind::nothing;
  }
  if (isBlockPage(check, check.page)) {
    return Kind::blockPage;
  }
  return isExpectedPage(check, check.page) ? Kind::expected : Kind::otherPage;
}

/// A server whose own clock has never been set says that it is 1970.
bool isOfOurTime(std::string_view date) {
  constexpr int firstYear = 2020;
  const std::vector<std::string_view> words = wordsOf(date);
  return words.size() > 3 && wholeNumber(words[3]) >= firstYear;
}

/// Only of the service's own servers: other servers may have any clock.
void noteServerClock(const WebCheck& check, const BlockToRead& block, Facts& facts) {
  const bool isService = check.kind == Kind::expected || check.kind == Kind::blockPage;
  if (!isService || check.isCached || !isOfOurTime(check.date) ||
      !facts.system.serverClock.empty()) {
    return;
  }
  facts.system.serverClock = check.date;
  for (const auto& lines : {block.outputLines(), block.errorLines()}) {
    for (const Line& line : lines) {
      if (contains(line.text, check.date) && !facts.system.serverClockSource) {
        facts.system.serverClockSource = block.at(line);
      }
    }
  }
}

/// Whether something else printed this, such as a shell without a curl. To standard error, curl
/// itself prints nothing, what it does, or an error with a number.
bool isAnotherTool(const BlockToRead& block) {
  const std::string_view error = trimmed(block.block.error());
  return trimmed(block.block.output()).empty() && !error.empty() && !error.starts_with("* ") &&
         !containsAny(error, {"curl: (", "% Total", "\n* ", "< HTTP/"});
}

}  // namespace

Reading readCurl(const BlockToRead& block, Facts& facts) {
  if (isAnotherTool(block)) {
    return Reading::notUnderstood;
  }
  WebCheck check{.key = block.key(), .url = urlIn(block.block.name), .source = block.title()};
  const bool isHeadersOnly = contains(block.block.name, " -LIs ");
  if (isHeadersOnly) {
    for (const Line& line : block.outputLines()) {
      readHeader(block, line, line.text, check);
    }
    check.kind = kindOfHeaders(check, block.endpoints);
  } else {
    readConversation(block, check);
    readPage(block, check);
    check.kind = kindOfPage(check);
  }
  noteServerClock(check, block, facts);
  facts.webChecks.push_back(std::move(check));
  return Reading::read;
}

}  // namespace reader
