// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "report/report.h"

namespace report {

namespace {

using text::Buffers;

void addLine(Buffers& buffers, std::string_view label, std::string_view text) {
  buffers.insert(buffers.end(), {label, text, "\n"});
}

void addStream(Buffers& buffers, std::string_view label, std::optional<std::string_view> text) {
  if (text && !text->empty()) {
    addLine(buffers, label, *text);
  }
}

void addBlock(Buffers& buffers, const ResultBlock& block) {
  buffers.push_back(separator);
  addLine(buffers, "Results for: ", block.displayName);
  addStream(buffers, "stdout:\n", block.standardOutput);
  addStream(buffers, "stderr:\n", block.standardError);
}

std::string headLine(std::string_view label, const std::optional<std::string>& text) {
  return text ? std::string(label) + *text + '\n' : std::string();
}

}  // namespace

std::string formatBlock(const ResultBlock& block) {
  Buffers buffers;
  addBlock(buffers, block);
  return text::join(buffers);
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
