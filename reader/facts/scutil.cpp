// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// What `scutil --dns` prints, on macOS and by the script that replaces it on Linux.

#include "reader/facts/extract.h"

namespace reader {

namespace {

/// The servers of one resolver, whose other facts may stand before or behind them: they get these
/// at its end.
class ResolverLines {
 public:
  explicit ResolverLines(std::vector<NameServer>& found) : servers(found) {}

  void begin(std::optional<int> resolver) {
    end();
    number = resolver;
    interface = domain = {};
  }

  void read(const BlockToRead& block, const Line& line) {
    const std::size_t colon = line.text.find(" : ");
    if (colon == std::string_view::npos) {
      return;
    }
    const std::string_view label = trimmed(line.text.substr(0, colon));
    const std::string_view value = trimmed(line.text.substr(colon + 3));
    if (label.starts_with("nameserver[")) {
      servers.push_back({.address = value, .resolver = number, .source = block.at(line)});
    } else if (label == "if_index") {
      interface = between(value, "(", ")").value_or("");
    } else if (label == "domain") {
      domain = value;
    }
  }

  void end() {
    for (; ended < servers.size(); ++ended) {
      servers[ended].interface = interface;
      servers[ended].domain = domain;
    }
  }

 private:
  std::vector<NameServer>& servers;
  std::size_t ended = 0;
  std::optional<int> number;
  std::string_view interface;
  std::string_view domain;
};

}  // namespace

Reading readScutil(const BlockToRead& block, Facts& facts) {
  bool isRead = false;
  ResolverLines resolver(facts.nameServers);
  for (const Line& line : block.outputLines()) {
    if (contains(line.text, "for scoped queries")) {
      // The same once more, for each interface.
      break;
    }
    if (contains(line.text, "DNS configuration")) {
      isRead = true;
    } else if (const auto number = after(trimmed(line.text), "resolver #")) {
      resolver.begin(wholeNumber(*number));
    } else {
      resolver.read(block, line);
    }
  }
  resolver.end();
  if (isRead) {
    facts.nameServerList = block.title();
  }
  const bool isEmpty = !block.block.standardOutput && !block.block.standardError;
  return isRead || isEmpty ? Reading::read : Reading::notUnderstood;
}

}  // namespace reader
