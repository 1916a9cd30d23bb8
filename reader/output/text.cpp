// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "reader/output/text.h"

#include <algorithm>
#include <array>

#include "reader/output/printable.h"
#include "reader/parse/lines.h"

namespace reader {

namespace {

constexpr std::size_t evidenceMax = 160;
constexpr std::size_t evidenceLinesMax = 6;
constexpr std::size_t textMax = 2000;

std::string_view nameOf(Severity severity) {
  switch (severity) {
    case Severity::problem:
      return "Problem";
    case Severity::warning:
      return "Warning";
    case Severity::note:
      break;
  }
  return "Note";
}

std::string evidenceOf(const Finding& finding) {
  std::string text;
  std::size_t count = 0;
  for (const Source& source : finding.evidence) {
    if (++count > evidenceLinesMax) {
      return text + "    and " + std::to_string(finding.evidence.size() - evidenceLinesMax) +
             " more lines\n";
    }
    text += "    line " + std::to_string(source.line) + ": " + printable(source.text, evidenceMax) +
            '\n';
  }
  return text;
}

std::string findingText(const Finding& finding) {
  return '\n' + std::string(nameOf(finding.severity)) + ": " + printable(finding.text, textMax) +
         " [" + std::string(finding.id) + "]\n" + evidenceOf(finding) + "  " +
         printable(finding.meaning, textMax) + "\n  " + printable(finding.advice, textMax) + '\n';
}

std::string headText(const Report& report) {
  std::string text;
  if (report.account) {
    text += "account: " + printable(*report.account, textMax) + '\n';
  }
  if (report.ticket) {
    text += "ticket: " + printable(*report.ticket, textMax) + '\n';
  }
  return text;
}

/// The commands that print something whatever they find, and have printed nothing.
std::string silenceText(const Report& report) {
  constexpr std::array<std::string_view, 5> perhapsSilent{"cat", "curl", "log", "ls", "system_log"};
  std::size_t count = 0;
  std::string_view first;
  for (const Block& block : report.blocks) {
    if (block.isComplete() && !block.standardOutput && !block.standardError &&
        block.planned != nullptr &&
        std::ranges::find(perhapsSilent, block.planned->kind) == perhapsSilent.end()) {
      first = ++count == 1 ? block.name : first;
    }
  }
  return count == 0 ? std::string()
                    : "Without any output: " + std::to_string(count) + " of " +
                          std::to_string(report.blocks.size()) +
                          " blocks, the first of them: " + printable(first, evidenceMax) + '\n';
}

/// What the verdict does not rest on.
std::string incompleteText(const Report& report) {
  std::string text;
  std::size_t incomplete = 0;
  for (const Block& block : report.blocks) {
    incomplete += block.isComplete() ? 0 : 1;
  }
  if (incomplete > 0) {
    text +=
        "Not looked at, since shortened, cut or in an unknown form: " + std::to_string(incomplete) +
        " of " + std::to_string(report.blocks.size()) + " blocks.\n";
  }
  text += silenceText(report);
  const auto doubtful = std::ranges::count_if(report.blocks, &Block::isDoubtful);
  if (doubtful > 0) {
    text += "Doubtful: " + std::to_string(doubtful) + " of " +
            std::to_string(report.blocks.size()) +
            " blocks stand in the text more than once, as where a page or a log holds a report, or "
            "the file two.\n";
  }
  if (!report.missing.empty()) {
    const std::size_t count = report.missing.size();
    // No full stop follows the command: it would be read as part of it.
    text += "Missing: " + std::to_string(count) +
            (count == 1 ? " block: " : " blocks, the first of them: ") +
            nameOf(*report.missing.front()) + '\n';
  }
  for (const Unread& unread : report.unread) {
    text += "Not in any block, from line " + std::to_string(unread.line) + " on (" +
            std::string(unread.why) + "): " + printable(trimmed(unread.text), evidenceMax) + '\n';
  }
  return text.empty() ? text : '\n' + text;
}

}  // namespace

std::string textOf(const ReportReading& reading) {
  std::string text = printable(reading.file, textMax) + ": " + verdictOf(reading.findings) + '\n' +
                     headText(reading.report);
  for (const Finding& finding : reading.findings) {
    text += findingText(finding);
  }
  text += '\n';
  for (const auto& [label, value] : mainFacts(reading.facts)) {
    if (!value.empty()) {
      text += label + ": " + printable(value, textMax) + '\n';
    }
  }
  return text + incompleteText(reading.report);
}

}  // namespace reader
