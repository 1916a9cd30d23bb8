// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// What `dig` prints: the same everywhere.

#include <algorithm>

#include "reader/facts/extract.h"

namespace reader {

namespace {

/// Reads the arguments as the plan gives them.
void readArguments(const BlockToRead& block, Query& query) {
  query.type = "A";
  const std::vector<std::string_view> words = wordsOf(block.block.name);
  for (std::size_t i = 1; i < words.size(); ++i) {
    if (words[i].starts_with('@')) {
      query.server = words[i].substr(1);
    } else if (words[i] == "-p" && i + 1 < words.size()) {
      query.port = wholeNumber(words[++i]).value_or(query.port);
    } else if (words[i] == "txt") {
      query.type = "TXT";
    } else if (!words[i].starts_with('+')) {
      query.name = words[i];
    }
  }
}

/// A line of the answer section.
void readAnswer(const BlockToRead& block, const Line& line, Query& query) {
  const std::vector<std::string_view> words = wordsOf(line.text);
  if (words.size() < 5 || words[2] != "IN") {
    return;
  }
  const auto dataBegin = static_cast<std::size_t>(words[4].data() - line.text.data());
  query.answers.push_back({.name = words[0],
                           .type = words[3],
                           .data = trimmed(line.text.substr(dataBegin)),
                           .source = block.at(line)});
}

/// Why there was no answer, if this line says so.
std::string_view errorIn(std::string_view text) {
  for (const std::string_view error :
       {"timed out", "connection refused", "network unreachable", "host unreachable",
        "no servers could be reached", "couldn't get address for", "end of file",
        "permission denied", "not a legal", "connection reset"}) {
    if (contains(text, error)) {
      return text.substr(text.find(error), error.size());
    }
  }
  return {};
}

void readHeaderLine(const BlockToRead& block, const Line& line, Query& query) {
  if (const auto status = between(line.text, "status: ", ",")) {
    query.status = *status;
    query.source = block.at(line);
  } else if (const auto time = after(line.text, ";; Query time: ")) {
    query.timeMs = leadingNumber(*time);
  } else if (const auto server = after(line.text, ";; SERVER: ")) {
    query.answeredBy = server->substr(0, server->find_first_of("( "));
  } else if (const auto when = after(line.text, ";; WHEN: ")) {
    query.when = *when;
  }
}

void readLines(const BlockToRead& block, const std::vector<Line>& lines, Query& query) {
  bool isAnswerSection = false;
  for (const Line& line : lines) {
    if (line.text.starts_with(";; ANSWER SECTION:")) {
      isAnswerSection = true;
    } else if (trimmed(line.text).empty()) {
      isAnswerSection = false;
    } else if (isAnswerSection && !line.text.starts_with(';')) {
      readAnswer(block, line, query);
    } else {
      readHeaderLine(block, line, query);
      const std::string_view error = line.text.starts_with("; <<>>") ? "" : errorIn(line.text);
      if (!error.empty() && query.error.empty()) {
        query.error = error;
        query.source = query.isAnswered() ? query.source : block.at(line);
      }
    }
  }
}

/// The text behind `label` in an answer such as "server resolver-a".
std::string_view textRecord(const Query& query, std::string_view label) {
  for (const Answer& answer : query.answers) {
    std::string_view text = answer.data;
    if (text.size() >= 2 && text.front() == '"' && text.back() == '"') {
      text = text.substr(1, text.size() - 2);
    }
    if (answer.type == "TXT" && text.starts_with(label) && text.size() > label.size()) {
      return text.substr(label.size());
    }
  }
  return {};
}

void addResolver(const Query& query, Facts& facts) {
  Resolver resolver{.asked = query.server,
                    .port = query.port,
                    .answeredBy = query.answeredBy,
                    .isService = std::nullopt,
                    .server = textRecord(query, "server "),
                    .organization = textRecord(query, "organization "),
                    .dataCentre = textRecord(query, "datacenter "),
                    .askedFrom = textRecord(query, "source "),
                    .timeMs = query.timeMs,
                    .error = query.error,
                    .key = query.key,
                    .source = query.source};
  if (query.isGood()) {
    resolver.isService = !resolver.server.empty();
    if (!query.answers.empty()) {
      resolver.source = query.answers.front().source;
    }
  }
  facts.resolvers.push_back(resolver);
}

void addAddresses(const Query& query, std::vector<PublicAddress>& addresses) {
  for (const Answer& answer : query.answers) {
    if (answer.type == "A" || answer.type == "AAAA") {
      addresses.push_back({.address = answer.data,
                           .by = query.name,
                           .server = query.server,
                           .source = answer.source});
    }
  }
}

}  // namespace

Reading readDig(const BlockToRead& block, Facts& facts) {
  Query query{.key = block.key(), .source = block.title()};
  readArguments(block, query);
  readLines(block, block.outputLines(), query);
  readLines(block, block.errorLines(), query);
  if (query.isAnswered()) {
    query.error = {};
  } else if (query.error.empty()) {
    // An empty block proves nothing: what was in it may not have been text.
    return block.block.standardOutput || block.block.standardError ? Reading::notUnderstood
                                                                   : Reading::read;
  }
  if (query.name.starts_with(block.endpoints.debugQueryName)) {
    addResolver(query, facts);
  } else if (query.key == "myip" || query.key == "myip-a" || query.key.ends_with("-direct")) {
    addAddresses(query, facts.publicAddresses);
  } else if (query.key.ends_with("-whoami")) {
    addAddresses(query, facts.resolverAddresses);
  }
  if (!query.when.empty() && facts.system.clock.empty()) {
    facts.system.clock = query.when;
    for (const Line& line : block.outputLines()) {
      if (line.text.starts_with(";; WHEN: ")) {
        facts.system.clockSource = block.at(line);
      }
    }
  }
  facts.queries.push_back(std::move(query));
  return Reading::read;
}

}  // namespace reader
