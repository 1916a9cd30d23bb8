// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// What `traceroute` prints, on Linux and on macOS. On macOS the first line is on standard error.

#include "reader/facts/extract.h"

namespace reader {

namespace {

/// "traceroute to HOST (ADDRESS), 30 hops max".
bool readFirstLine(const Line& line, Path& path) {
  const auto rest = after(line.text, "traceroute to ");
  if (!rest) {
    return false;
  }
  path.address = between(*rest, "(", ")").value_or("");
  return true;
}

/// A hop whose probes were answered by several hosts goes on in lines without a number.
struct HopLine {
  std::optional<int> number;
  std::vector<std::string_view> words;
};

std::optional<HopLine> hopLine(std::string_view text) {
  // The error of a probe is within the line, after its number or an asterisk.
  text = text.substr(0, text.find("traceroute: "));
  HopLine line{.number = std::nullopt, .words = wordsOf(text)};
  if (line.words.empty() || !(text[0] == ' ' || (text[0] >= '0' && text[0] <= '9'))) {
    return std::nullopt;
  }
  line.number = wholeNumber(line.words[0]);
  if (line.number) {
    line.words.erase(line.words.begin());
  }
  return line;
}

void noteHost(std::string_view address, Hop& hop) {
  const std::string_view last = hop.others.empty() ? hop.address : hop.others.back().address;
  if (last.empty()) {
    hop.address = address;
  } else if (last != address) {
    hop.others.push_back({.address = address});
  }
}

void readHopWords(const std::vector<std::string_view>& words, Hop& hop) {
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string_view word = words[i];
    const bool isTime = i + 1 < words.size() && words[i + 1] == "ms";
    if (word == "*") {
      ++hop.lost;
    } else if (word.starts_with('!')) {
      // Alone it says that the answer just arrived, as one whose time to live is that of the probe.
      std::string_view& note = hop.others.empty() ? hop.note : hop.others.back().note;
      note = word.size() > 1 ? word : note;
    } else if (isTime) {
      if (const auto time = leadingNumber(word)) {
        hop.timesMs.push_back(*time);
      }
      ++i;
    } else if (word.starts_with('(') && word.ends_with(')')) {
      noteHost(word.substr(1, word.size() - 2), hop);
    } else if (hop.name.empty()) {
      hop.name = word;
    }
  }
  if (hop.address.empty() && !hop.timesMs.empty()) {
    hop.address = hop.name;
  }
}

/// A packet passes at most 255 hosts, and each hop is farther away than the one before. Without
/// that, a forged path could have any length.
bool isNextHop(int number, const Path& path) {
  constexpr int numberMax = 255;
  return number <= numberMax && (path.hops.empty() || number > path.hops.back().number);
}

void readLines(const BlockToRead& block, const std::vector<Line>& lines, Path& path) {
  for (const Line& line : lines) {
    if (readFirstLine(line, path)) {
      path.source = block.at(line);
    } else if (const auto hop = path.address.empty() ? std::nullopt : hopLine(line.text)) {
      if (hop->number && !isNextHop(*hop->number, path)) {
        continue;
      }
      if (hop->number) {
        path.hops.push_back({.number = *hop->number, .source = block.at(line)});
      }
      if (!path.hops.empty()) {
        readHopWords(hop->words, path.hops.back());
      }
    } else if (path.error.empty() &&
               (isNameError(line.text) || contains(line.text, "unreachable") ||
                contains(line.text, "No route to host") || contains(line.text, "sendto: "))) {
      path.error = trimmed(line.text);
      path.source = path.hops.empty() ? block.at(line) : path.source;
    }
  }
}

}  // namespace

Reading readTraceroute(const BlockToRead& block, Facts& facts) {
  if (!block.block.standardOutput && !block.block.standardError) {
    return Reading::read;
  }
  Path path{.key = block.key(), .source = block.title()};
  path.host = wordsOf(block.block.name).back();
  readLines(block, block.errorLines(), path);
  readLines(block, block.outputLines(), path);
  if (path.address.empty() && path.error.empty()) {
    return Reading::notUnderstood;
  }
  facts.paths.push_back(std::move(path));
  return Reading::read;
}

}  // namespace reader
