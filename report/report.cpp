// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "report/report.h"

namespace report {

namespace {

using platform::Pieces;

void addLine(Pieces& pieces, std::string_view label, std::string_view text) {
  pieces.insert(pieces.end(), {label, text, "\n"});
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

std::string headLine(std::string_view label, const std::optional<std::string>& text) {
  if (!text) {
    return {};
  }
  return std::string(label) + *text + '\n';
}

}  // namespace

std::string formatBlock(const ResultBlock& block) {
  Pieces pieces;
  addBlock(pieces, block);
  return platform::join(pieces);
}

Report::Report(const std::optional<std::string>& account, const std::optional<std::string>& ticket,
               std::span<const ResultBlock> blocks)
    : head(std::make_shared<const std::string>(headLine("Halvik account: ", account) +
                                               headLine("Halvik ticket: ", ticket))) {
  if (!head->empty()) {
    parts.push_back(*head);
  }
  for (const ResultBlock& block : blocks) {
    addBlock(parts, block);
  }
}

}  // namespace report
