// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "reader/parse/report.h"

#include <algorithm>
#include <string>

#include "reader/parse/block_choice.h"
#include "reader/parse/lines.h"
#include "reader/parse/titles.h"

namespace reader {

namespace {

constexpr std::string_view accountLabel = "Halvik account: ";
constexpr std::string_view ticketLabel = "Halvik ticket: ";

/// Takes the line with `label` off the beginning of `rest`.
std::optional<std::string_view> takeHeadLine(std::string_view& rest, std::string_view label) {
  if (!rest.starts_with(label)) {
    return std::nullopt;
  }
  const std::size_t end = std::min(rest.find('\n'), rest.size());
  std::string_view value = rest.substr(label.size(), end - label.size());
  if (value.ends_with('\r')) {
    value.remove_suffix(1);
  }
  rest.remove_prefix(std::min(end + 1, rest.size()));
  return value;
}

void readHead(Report& report, std::string_view text) {
  std::string_view rest = after(text, byteOrderMark).value_or(text);
  const std::string_view label = rest.starts_with(separator) ? rest.substr(separator.size()) : rest;
  if (label.starts_with(accountLabel) || label.starts_with(ticketLabel)) {
    rest = label;
  }
  report.account = takeHeadLine(rest, accountLabel);
  report.ticket = takeHeadLine(rest, ticketLabel);
  report.head = text.substr(0, text.size() - rest.size());
}

/// What a report ends with: what the last command printed ends with a line feed of its own, and one
/// of the report's follows. A text of another system has carriage returns besides.
bool endsLikeAReport(std::string_view text) {
  return text.ends_with("\n\n") || text.ends_with("\n\r\n");
}

/// What the program prints after a report: an empty line, and where the report went.
std::string_view printedAfter(std::string_view text) {
  constexpr std::string_view file = "outputFile=";
  constexpr std::string_view address = "url=";
  constexpr std::size_t lineMax = 8192;
  std::size_t begin = text.size();
  for (const std::string_view label : {address, file}) {
    std::string_view before = text.substr(0, begin);
    if (before.ends_with('\n')) {
      before.remove_suffix(1);
    }
    const std::size_t feed = before.rfind('\n');
    if (feed != std::string_view::npos && begin - feed < lineMax &&
        before.substr(feed + 1).starts_with(label)) {
      begin = feed + 1;
    }
  }
  const std::string_view report = text.substr(0, begin);
  if (begin == text.size() || !endsLikeAReport(report)) {
    return {};
  }
  return text.substr(begin - (report.ends_with("\r\n") ? 2 : 1));
}

std::string_view withoutLineFeed(std::string_view text) {
  if (text.ends_with('\n')) {
    text.remove_suffix(1);
  }
  return text;
}

std::optional<std::string_view> afterLabel(std::string_view text, std::string_view label) {
  const std::optional<std::string_view> rest = after(text, label);
  if (!rest) {
    return std::nullopt;
  }
  if (const auto unix = after(*rest, "\n")) {
    return unix;
  }
  return after(*rest, "\r\n");
}

void readStandardError(Block& block, std::string_view text, std::size_t line) {
  block.standardError = withoutLineFeed(text);
  block.errorLine = line;
}

/// Takes the text after a block's title apart.
void readStreams(Block& block, std::string_view content, std::size_t line) {
  if (content.empty()) {
    return;
  }
  if (const auto error = afterLabel(content, "stderr:")) {
    readStandardError(block, *error, line + 1);
    return;
  }
  const auto output = afterLabel(content, "stdout:");
  if (!output) {
    block.isMalformed = true;
    return;
  }
  block.outputLine = line + 1;
  // What a command printed may hold such a line itself; a page of a stranger more likely than an
  // error message. So the last one is taken, unless it belongs to a block within the output.
  for (const std::string_view label : {"\nstderr:\n", "\nstderr:\r\n"}) {
    const std::size_t at = output->rfind(label);
    if (at != std::string_view::npos && findTitles(output->substr(at + label.size())).empty()) {
      block.standardOutput = output->substr(0, at);
      readStandardError(block, output->substr(at + label.size()),
                        block.outputLine + lineFeeds(*block.standardOutput) + 2);
      return;
    }
  }
  block.standardOutput = withoutLineFeed(*output);
}

Block readBlock(std::string_view whole, const Title& title, std::size_t line, bool isLast) {
  Block block{.whole = whole, .name = title.name, .line = line};
  const std::string_view content = whole.substr(std::min(title.size, whole.size()));
  block.isTrimmed = content.ends_with(trimmingMarker);
  readStreams(block, content, line + 1);
  block.isCut = isLast && !endsLikeAReport(whole) && !block.isTrimmed;
  return block;
}

bool isDue(const PlannedBlock& planned, bool hasDomain, bool hasSkivra) {
  return planned.part == PlannedBlock::Part::always ||
         (planned.part == PlannedBlock::Part::domain && hasDomain) ||
         (planned.part == PlannedBlock::Part::skivra && hasSkivra);
}

/// Notes what is missing, and which blocks stand before a hole: they may be cut.
void findHoles(Report& report, const Plan& plan) {
  std::vector<std::size_t> blockAt(plan.blocks().size(), report.blocks.size());
  bool hasDomain = false;
  bool hasSkivra = false;
  for (std::size_t i = 0; i < report.blocks.size(); ++i) {
    if (const PlannedBlock* planned = report.blocks[i].planned) {
      blockAt[static_cast<std::size_t>(planned - plan.blocks().data())] = i;
      hasDomain |= planned->part == PlannedBlock::Part::domain;
      hasSkivra |= planned->part == PlannedBlock::Part::skivra ||
                   planned->part == PlannedBlock::Part::skivraPerhaps;
    }
  }
  std::size_t before = report.blocks.size();
  for (std::size_t place = 0; place < blockAt.size(); ++place) {
    if (blockAt[place] < report.blocks.size()) {
      before = blockAt[place];
    } else if (isDue(plan.blocks()[place], hasDomain, hasSkivra)) {
      report.missing.push_back(&plan.blocks()[place]);
      if (before < report.blocks.size()) {
        report.blocks[before].isCut = true;
      }
    }
  }
}

void addUnread(Report& report, std::string_view text, std::size_t line, std::string_view why) {
  if (!text.empty()) {
    report.unread.push_back({.text = text, .line = line, .why = why});
  }
}

}  // namespace

Report parseReport(std::string_view text, const Plan& plan) {
  Report report;
  readHead(report, text);
  const std::string_view printed = printedAfter(text);
  const std::string_view body = text.substr(0, text.size() - printed.size());
  const std::vector<Title> all = findTitles(body);
  const std::vector<ChosenTitle> titles = chooseTitles(all, plan);
  const std::size_t bodyBegin = titles.empty() ? body.size() : titles.front().title.offset;
  std::size_t line = 1 + lineFeeds(report.head);
  if (report.head.size() < bodyBegin) {
    addUnread(report, body.substr(report.head.size(), bodyBegin - report.head.size()), line,
              titles.empty() ? "no block of a report" : "before the first block");
  }
  line = 1 + lineFeeds(body.substr(0, bodyBegin));
  report.blocks.reserve(titles.size());
  for (std::size_t i = 0; i < titles.size(); ++i) {
    const bool isLast = i + 1 == titles.size();
    const std::size_t begin = titles[i].title.offset;
    const std::size_t end = isLast ? body.size() : titles[i + 1].title.offset;
    const std::string_view whole = body.substr(begin, end - begin);
    Block& block = report.blocks.emplace_back(readBlock(whole, titles[i].title, line, isLast));
    block.planned = titles[i].planned;
    block.isDoubtful = titles[i].isDoubtful;
    line += lineFeeds(whole);
  }
  addUnread(report, printed, line, "printed after the report");
  if (std::ranges::any_of(report.blocks, [](const Block& block) { return block.planned; })) {
    findHoles(report, plan);
  }
  return report;
}

}  // namespace reader
