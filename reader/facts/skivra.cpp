// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The Skivra's files: its state, its folder, its lists and its logs.

#include "reader/facts/extract.h"

namespace reader {

namespace {

bool isMissingFile(const BlockToRead& block) {
  return contains(block.block.error(), "No such file or directory");
}

/// The value that follows a key in a property list.
std::string_view plistValue(std::string_view text, std::string_view key) {
  const std::size_t at = text.find("<key>" + std::string(key) + "</key>");
  if (at == std::string_view::npos) {
    return {};
  }
  std::string_view rest = text.substr(at);
  rest = rest.substr(rest.find("</key>") + 6);
  const auto value = between(rest, ">", "<");
  return value ? trimmed(*value) : std::string_view();
}

Reading readState(const BlockToRead& block, Skivra& skivra) {
  if (isMissingFile(block)) {
    skivra.stateFile = Skivra::File::missing;
    skivra.stateSource = block.firstError();
    return Reading::read;
  }
  const std::string_view text = block.block.output();
  if (text.empty()) {
    return block.block.standardError ? Reading::notUnderstood : Reading::read;
  }
  skivra.stateFile = Skivra::File::present;
  skivra.state = plistValue(text, "state");
  skivra.organization = plistValue(text, "organization");
  skivra.stateSource = block.at(block.outputLines().front());
  return Reading::read;
}

Reading readFolder(const BlockToRead& block, Skivra& skivra) {
  if (block.block.standardOutput) {
    skivra.isInstalled = true;
    skivra.folderSource = block.at(block.outputLines().front());
  } else if (isMissingFile(block)) {
    skivra.isInstalled = false;
    skivra.folderSource = block.firstError();
  }
  return Reading::read;
}

/// The time with which a line of a log begins, such as "2026-11-22 02:47:05".
std::string_view timeAtBeginning(std::string_view line) {
  constexpr std::string_view form = "dddd-dd-dd?dd:dd:dd";
  if (line.size() < form.size()) {
    return {};
  }
  for (std::size_t i = 0; i < form.size(); ++i) {
    const bool isDigit = line[i] >= '0' && line[i] <= '9';
    const bool fits = form[i] == 'd' ? isDigit : form[i] == '?' || form[i] == line[i];
    if (!fits) {
      return {};
    }
  }
  return line.substr(0, form.size());
}

std::string_view lastLine(std::string_view text) {
  text = trimmed(text);
  return text.substr(text.rfind('\n') + 1);
}

}  // namespace

Reading readSkivraFile(const BlockToRead& block, Facts& facts) {
  Skivra& skivra = facts.skivra;
  if (block.key() == "skivra-state") {
    return readState(block, skivra);
  }
  if (block.key().starts_with("skivra-folder")) {
    return readFolder(block, skivra);
  }
  for (const Line& line : block.outputLines()) {
    const std::vector<std::string_view> words = wordsOf(line.text);
    if (block.key() == "skivra-resolv-orig" && words.size() > 1 && words[0] == "nameserver") {
      skivra.originalNameServers.push_back(words[1]);
    } else if (block.key() == "skivra-local-domains" && !words.empty()) {
      skivra.localDomains.push_back(trimmed(line.text));
    }
  }
  return Reading::read;
}

Reading readSkivraLog(const BlockToRead& block, Facts& facts) {
  std::string_view folder = block.block.planned->prefix;
  folder.remove_suffix(1);
  folder = folder.substr(folder.rfind('/') + 1);
  std::vector<SkivraLogs>& all = facts.skivra.logs;
  if (all.empty() || all.back().folder != folder) {
    all.push_back({.folder = folder, .firstBlock = block.index});
  }
  SkivraLogs& logs = all.back();
  ++logs.count;
  logs.bytes += block.block.output().size();
  logs.lastBlock = block.index;
  const std::string_view first = timeAtBeginning(block.block.output());
  logs.oldest = logs.oldest.empty() ? first : logs.oldest;
  const std::string_view last = timeAtBeginning(lastLine(block.block.output()));
  logs.newest = last.empty() ? logs.newest : last;
  return Reading::read;
}

}  // namespace reader
