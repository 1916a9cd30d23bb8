// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "reader/output/table.h"

#include <algorithm>
#include <array>
#include <map>
#include <tuple>
#include <utility>

#include "reader/output/printable.h"
#include "reader/rules/questions.h"

namespace reader {

namespace {

constexpr std::size_t columns = 5;
using Cells = std::array<std::string, columns>;

std::vector<std::string> idsOf(const std::vector<Finding>& findings, Severity severity) {
  std::vector<std::string> ids;
  for (const Finding& finding : findings) {
    if (finding.severity == severity) {
      ids.emplace_back(finding.id);
    }
  }
  return ids;
}

/// Whether findings may rest on the block. The others are shown as they are, and the long ones
/// among them are shortened first.
bool isJudged(const PlannedBlock* planned) {
  constexpr std::array<std::string_view, 4> shownOnly{"log", "system_log", "ps", "route"};
  return planned != nullptr && std::ranges::find(shownOnly, planned->kind) == shownOnly.end();
}

bool isIncomplete(const Report& report) {
  const auto isLost = [](const Block& block) {
    return !block.isComplete() && isJudged(block.planned);
  };
  return std::ranges::any_of(report.blocks, isLost) ||
         std::ranges::any_of(report.missing, isJudged);
}

std::string valueOf(const TableRow& row, std::string_view label) {
  const auto found =
      std::ranges::find(row.facts, label, &std::pair<std::string, std::string>::first);
  return found == row.facts.end() ? std::string() : found->second;
}

std::size_t charactersIn(std::string_view text) {
  return static_cast<std::size_t>(std::ranges::count_if(
      text, [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80; }));
}

Cells cellsOf(const TableRow& row) {
  constexpr std::size_t charactersMax = 40;
  std::string found = row.problems.empty() ? "nothing" : enumerated(row.problems);
  if (row.isIncomplete) {
    found += " (incomplete)";
  }
  if (!row.warnings.empty()) {
    found += " (warnings: " + enumerated(row.warnings) + ')';
  }
  const auto fact = [&](std::string_view label) {
    return printable(valueOf(row, label), charactersMax);
  };
  return {printable(row.file, charactersMax), found, fact("computer"), fact("public address"),
          fact("name servers")};
}

/// Columns as wide as what stands in them.
std::string textOf(const std::vector<Cells>& lines) {
  std::array<std::size_t, columns> widths{};
  for (const Cells& cells : lines) {
    for (std::size_t i = 0; i < columns; ++i) {
      widths[i] = std::max(widths[i], charactersIn(cells[i]));
    }
  }
  std::string text;
  for (const Cells& cells : lines) {
    std::string line;
    for (std::size_t i = 0; i < columns; ++i) {
      line += cells[i] + std::string(widths[i] - charactersIn(cells[i]) + 2, ' ');
    }
    text += line.substr(0, line.find_last_not_of(' ') + 1) + '\n';
  }
  return text;
}

/// What is said of a problem, if it is the same of all machines that have it.
std::string sentenceOf(const std::string& problem, const std::vector<TableRow>& rows) {
  std::string shared;
  for (const TableRow& row : rows) {
    const auto found = row.sentences.find(problem);
    if (found == row.sentences.end()) {
      continue;
    }
    if (!shared.empty() && shared != found->second) {
      return {};
    }
    shared = found->second;
  }
  return shared;
}

/// How many have no problem, and how many may just not show theirs.
std::string soundMachines(const std::vector<TableRow>& rows) {
  const auto count = [&](bool isIncomplete) {
    return std::ranges::count_if(rows, [&](const TableRow& row) {
      return row.problems.empty() && row.isIncomplete == isIncomplete;
    });
  };
  const std::string all = " of " + std::to_string(rows.size()) + ": nothing";
  std::string text = std::to_string(count(false)) + all + '\n';
  if (count(true) > 0) {
    text += std::to_string(count(true)) + all + " (incomplete)\n";
  }
  return text;
}

/// The problems that several machines have, those of most machines first, and how many have none.
std::string sharedProblems(const std::vector<TableRow>& rows) {
  std::map<std::string, std::size_t> machines;
  for (const TableRow& row : rows) {
    for (const std::string& problem : row.problems) {
      ++machines[problem];
    }
  }
  std::vector<std::pair<std::string, std::size_t>> shared(machines.begin(), machines.end());
  std::erase_if(shared, [](const auto& problem) { return problem.second < 2; });
  std::ranges::stable_sort(shared, std::ranges::greater(),
                           &std::pair<std::string, std::size_t>::second);
  const std::string all = " of " + std::to_string(rows.size()) + ": ";
  std::string text;
  for (const auto& [problem, count] : shared) {
    const std::string sentence = sentenceOf(problem, rows);
    text += std::to_string(count);
    text += all;
    text += problem;
    if (!sentence.empty()) {
      text += ": ";
      text += printable(sentence, 500);
    }
    text += '\n';
  }
  return text.empty() ? text : text + soundMachines(rows);
}

std::string commonFacts(const std::vector<TableRow>& rows) {
  if (rows.size() < 2) {
    return {};
  }
  std::string text;
  for (const auto& [label, value] : rows.front().facts) {
    if (!value.empty() &&
        std::ranges::all_of(rows, [&, &name = label, &shared = value](const TableRow& row) {
          return valueOf(row, name) == shared;
        })) {
      text += label + ": " + printable(value, 500) + '\n';
    }
  }
  return text;
}

std::string paragraph(const std::string& heading, const std::string& text) {
  return text.empty() ? text : '\n' + heading + '\n' + text;
}

}  // namespace

TableRow rowOf(const ReportReading& reading) {
  std::map<std::string, std::string> sentences;
  for (const Finding& finding : reading.findings) {
    if (finding.severity == Severity::problem) {
      sentences.emplace(finding.id, finding.text);
    }
  }
  return {.file = reading.file,
          .problems = idsOf(reading.findings, Severity::problem),
          .sentences = std::move(sentences),
          .warnings = idsOf(reading.findings, Severity::warning),
          .isIncomplete = isIncomplete(reading.report),
          .facts = mainFacts(reading.facts)};
}

std::string tableOf(std::vector<TableRow> rows) {
  std::map<std::vector<std::string>, std::size_t> alike;
  for (const TableRow& row : rows) {
    ++alike[row.problems];
  }
  std::ranges::stable_sort(rows, {}, [&](const TableRow& row) {
    return std::make_tuple(alike[row.problems], row.problems.empty(), row.problems);
  });
  std::vector<Cells> lines{{"Report", "Problems", "Computer", "Public address", "Name servers"}};
  for (const TableRow& row : rows) {
    lines.push_back(cellsOf(row));
  }
  return textOf(lines) + paragraph("Shared problems", sharedProblems(rows)) +
         paragraph("All " + std::to_string(rows.size()) + " have in common", commonFacts(rows));
}

}  // namespace reader
