// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "report/report.h"

#include <vector>

namespace report {

namespace {

// The pieces of a report in order, as views, so that its size is known before the first byte is
// copied.
using Pieces = std::vector<std::string_view>;

void addLine(Pieces& pieces, std::string_view label, std::string_view text) {
  pieces.insert(pieces.end(), {label, text, "\n"});
}

void addHead(Pieces& pieces, std::string_view label, const std::optional<std::string>& text) {
  if (text) {
    addLine(pieces, label, *text);
  }
}

void addStream(Pieces& pieces, std::string_view label, std::optional<std::string_view> text) {
  if (text && !text->empty()) {
    addLine(pieces, label, *text);
  }
}

void addBlock(Pieces& pieces, const ResultBlock& block) {
  pieces.push_back(separator);
  addLine(pieces, "Results for: ", block.displayName);
  addStream(pieces, "stdout:\n", block.standardOutput);
  addStream(pieces, "stderr:\n", block.standardError);
}

std::string join(const Pieces& pieces) {
  std::size_t size = 0;
  for (const std::string_view piece : pieces) {
    size += piece.size();
  }
  std::string joined;
  joined.reserve(size);
  for (const std::string_view piece : pieces) {
    joined += piece;
  }
  return joined;
}

}  // namespace

std::string formatBlock(const ResultBlock& block) {
  Pieces pieces;
  addBlock(pieces, block);
  return join(pieces);
}

std::string buildReport(const std::optional<std::string>& account,
                        const std::optional<std::string>& ticket,
                        std::span<const ResultBlock> blocks) {
  Pieces pieces;
  addHead(pieces, "Halvik account: ", account);
  addHead(pieces, "Halvik ticket: ", ticket);
  for (const ResultBlock& block : blocks) {
    addBlock(pieces, block);
  }
  return join(pieces);
}

}  // namespace report
