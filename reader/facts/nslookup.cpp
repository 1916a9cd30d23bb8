// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// What `nslookup` prints when it asks a server for its name.

#include "reader/facts/extract.h"

namespace reader {

Reading readNslookup(const BlockToRead& block, Facts& facts) {
  const std::vector<std::string_view> words = wordsOf(block.block.name);
  ServerName found{.server = words.back(), .name = {}, .error = {}, .source = block.title()};
  for (const auto& lines : {block.outputLines(), block.errorLines()}) {
    for (const Line& line : lines) {
      if (const auto name = between(line.text, "text = \"", "\"")) {
        found.name = *name;
        found.error = {};
        found.source = block.at(line);
        break;
      }
      for (const std::string_view error :
           {"timed out", "connection refused", "network unreachable", "host unreachable",
            "no servers could be reached", "server can't find", "No answer", "SERVFAIL"}) {
        if (found.error.empty() && contains(line.text, error)) {
          found.error = error;
          found.source = block.at(line);
        }
      }
    }
    if (!found.name.empty()) {
      break;
    }
  }
  const bool isRead = !found.name.empty() || !found.error.empty();
  if (isRead) {
    facts.serverNames.push_back(found);
  }
  const bool isEmpty = !block.block.standardOutput && !block.block.standardError;
  return isRead || isEmpty ? Reading::read : Reading::notUnderstood;
}

}  // namespace reader
