// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "reader/facts/extract.h"

#include <array>
#include <utility>

namespace reader {

namespace {

// Nothing that a rule asks for is that long. Whatever is, stays text.
constexpr std::size_t sizeMax = std::size_t{1} << 20;

using Read = Reading (*)(const BlockToRead&, Facts&);

constexpr std::array<std::pair<std::string_view, Read>, 12> readers{{
    {"dig", readDig},
    {"nslookup", readNslookup},
    {"ping", readPing},
    {"traceroute", readTraceroute},
    {"ifconfig", readIfconfig},
    {"scutil", readScutil},
    {"netstat", readNetstat},
    {"curl", readCurl},
    {"system_profiler", readSystemProfiler},
    {"cat", readSkivraFile},
    {"ls", readSkivraFile},
    {"log", readSkivraLog},
}};

Read readerOf(std::string_view kind) {
  for (const auto& [name, read] : readers) {
    if (name == kind) {
      return read;
    }
  }
  return nullptr;
}

void findDomain(const Report& report, Facts& facts) {
  for (const Block& block : report.blocks) {
    if (block.planned != nullptr && block.planned->hasWord && !block.planned->isRepeated) {
      facts.domain = wordIn(*block.planned, block.name);
      return;
    }
  }
}

}  // namespace

Source BlockToRead::firstError() const {
  for (const Line& line : errorLines()) {
    if (!trimmed(line.text).empty()) {
      return at(line);
    }
  }
  return title();
}

bool isNameError(std::string_view error) {
  return containsAny(
      error, {"name resolution", "Name or service not known", "cannot resolve",
              "nodename nor servname", "unknown host", "Unknown host", "couldn't get address for",
              "Could not resolve host", "No address associated"});
}

Facts extractFacts(const Report& report, const diagnostics::Endpoints& endpoints) {
  Facts facts{.endpoints = endpoints};
  findDomain(report, facts);
  for (std::size_t index = 0; index < report.blocks.size(); ++index) {
    const Block& block = report.blocks[index];
    const Read read = block.planned != nullptr ? readerOf(block.planned->kind) : nullptr;
    const bool isLog = read == readSkivraLog;
    if (read == nullptr || (!isLog && (!block.isComplete() || block.whole.size() > sizeMax))) {
      continue;
    }
    const BlockToRead toRead{.block = block, .index = index, .endpoints = endpoints};
    if (read(toRead, facts) == Reading::notUnderstood) {
      facts.toolErrors.push_back(
          {.kind = block.planned->kind,
           .source = block.standardError ? toRead.firstError() : toRead.title()});
    }
  }
  return facts;
}

}  // namespace reader
