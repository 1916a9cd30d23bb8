// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// What `ping` prints, on Linux and on macOS.

#include "reader/facts/extract.h"

namespace reader {

namespace {

/// "5 packets transmitted, 5 received, 0% packet loss" on Linux, "5 packets received" on macOS.
bool readCounts(std::string_view text, Ping& ping) {
  const auto sent = text.find(" packets transmitted, ");
  if (sent == std::string_view::npos) {
    return false;
  }
  ping.sent = wholeNumber(trimmed(text.substr(0, sent)));
  const std::string_view rest =
      text.substr(sent + std::string_view(" packets transmitted, ").size());
  ping.received = wholeNumber(rest.substr(0, rest.find(' ')));
  return ping.sent && ping.received;
}

/// What a router says, or that no answer came in time.
bool isComplaint(std::string_view text) {
  return containsAny(text, {"Unreachable", "Time to live exceeded", "Redirect Host", "filtered",
                            "Prohibited", "prohibited", "sendto:", "sendmsg:", "Packet filtered"});
}

/// "host (203.0.113.10) 56(84) bytes of data.", for IPv6 "host(host (2001:db8::10)) 56 data bytes".
std::string_view addressIn(std::string_view text) {
  const std::size_t end = text.find(')');
  const std::size_t begin = text.rfind('(', end);
  if (begin == std::string_view::npos || end == std::string_view::npos) {
    return {};
  }
  return text.substr(begin + 1, end - begin - 1);
}

/// Of an answer. Nothing waits for one as long as hours.
void readTime(std::string_view text, Ping& ping) {
  constexpr double timeMsMax = 1e7;
  const std::size_t time = text.find("time=");
  const auto number =
      time == std::string_view::npos ? std::nullopt : leadingNumber(text.substr(time + 5));
  if (number && *number <= timeMsMax) {
    ping.timesMs.push_back(*number);
  }
}

void readLine(const BlockToRead& block, const Line& line, Ping& ping) {
  if (const auto rest = after(line.text, "PING ")) {
    ping.address = addressIn(*rest);
  } else if (readCounts(line.text, ping)) {
    ping.source = block.at(line);
  } else if (isComplaint(line.text)) {
    // macOS prints it as so many bytes from a router.
    ping.error = ping.error.empty() ? trimmed(line.text) : ping.error;
  } else if (contains(line.text, " bytes from ") && !contains(line.text, "DUP!")) {
    readTime(line.text, ping);
  }
}

void readError(const BlockToRead& block, Ping& ping) {
  for (const Line& line : block.errorLines()) {
    const bool isKnown = isNameError(line.text) || contains(line.text, "unreachable") ||
                         contains(line.text, "No route to host") || isComplaint(line.text);
    if (isKnown && ping.error.empty()) {
      ping.error = trimmed(line.text);
      ping.source = ping.sent ? ping.source : block.at(line);
    }
  }
}

}  // namespace

Reading readPing(const BlockToRead& block, Facts& facts) {
  if (!block.block.standardOutput && !block.block.standardError) {
    return Reading::read;
  }
  Ping ping{.key = block.key(), .source = block.title()};
  const std::vector<std::string_view> words = wordsOf(block.block.name);
  const auto comment = between(block.block.name, "(", ")").value_or("");
  ping.isCity = comment.ends_with(" router");
  ping.name = comment.substr(0, comment.rfind(" router"));
  ping.host = words.size() > 3 ? words[3] : std::string_view();
  for (const Line& line : block.outputLines()) {
    readLine(block, line, ping);
  }
  readError(block, ping);
  if (block.key() == "blocked-ping") {
    // Its time to live of 1 lets nothing arrive on Linux, where the option means another thing.
    return Reading::read;
  }
  if (!ping.sent && ping.error.empty()) {
    return Reading::notUnderstood;
  }
  facts.pings.push_back(std::move(ping));
  return Reading::read;
}

}  // namespace reader
