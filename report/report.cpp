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

std::string headLine(std::string_view label, const std::optional<std::string>& text) {
  return text ? std::string(label) + *text + '\n' : std::string();
}

}  // namespace

std::string headOf(const std::optional<std::string>& account,
                   const std::optional<std::string>& ticket) {
  return headLine("Halvik account: ", account) + headLine("Halvik ticket: ", ticket);
}

void addBlock(Buffers& report, const ResultBlock& block) {
  report.push_back(separator);
  addLine(report, "Results for: ", block.displayName);
  addStream(report, "stdout:\n", block.standardOutput);
  addStream(report, "stderr:\n", block.standardError);
}

}  // namespace report
