// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Input: a report, or anything else that somebody calls one. Properties: every byte of it is in the
// head, in a block or in what was not read, once and in order; a block is what its parts make; a
// terminal obeys nothing of a summary, a comparison or a table; the JSON can be parsed, is ASCII
// and has all blocks; the page has the elements, attributes and texts that the page of an empty
// report has, and the same JSON as its data.

#include <nlohmann/json.hpp>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "fuzz/html_page.h"
#include "fuzz/slow_utf8.h"
#include "fuzz/support.h"
#include "reader/output/compare.h"
#include "reader/output/html.h"
#include "reader/output/json.h"
#include "reader/output/table.h"
#include "reader/output/text.h"
#include "reader/parse/titles.h"

namespace {

using reader::Block;
using reader::ReportReading;

void checkAccount(std::string_view text, const reader::Report& report) {
  std::vector<std::string_view> parts{report.head};
  for (const Block& block : report.blocks) {
    parts.push_back(block.whole);
  }
  for (const reader::Unread& unread : report.unread) {
    parts.push_back(unread.text);
  }
  std::erase_if(parts, [](std::string_view part) { return part.empty(); });
  std::ranges::sort(parts, {}, [](std::string_view part) { return part.data(); });
  std::size_t size = 0;
  for (const std::string_view part : parts) {
    fuzz::check(part.data() == text.data() + size, "parts follow each other");
    size += part.size();
  }
  fuzz::check(size == text.size(), "all bytes are in a part");
}

/// The length of a block's parts, without the line ends of its labels.
void checkBlock(const Block& block) {
  fuzz::check(block.whole.starts_with(reader::separator), "a block begins with the separator");
  fuzz::check(block.whole.find(block.name) != std::string_view::npos, "with its name");
  if (block.isMalformed || block.whole.find('\r') != std::string_view::npos) {
    return;
  }
  std::string slow =
      std::string(reader::separator) + "Results for: " + std::string(block.name) + '\n';
  if (block.standardOutput) {
    slow += "stdout:\n" + std::string(*block.standardOutput) + '\n';
  }
  if (block.standardError) {
    slow += "stderr:\n" + std::string(*block.standardError) + '\n';
  }
  // What is cut may lack its line feed.
  const bool isWhole = slow == block.whole || slow == std::string(block.whole) + '\n';
  fuzz::check(isWhole, "a block is what its parts make");
}

std::string jsonOf(const ReportReading& reading) {
  std::string json;
  reader::Output output([&](std::string_view text) { json += text; });
  writeJson(output, reading, reader::JsonUse::alone);
  output.finish();
  return json;
}

nlohmann::json checkJson(const ReportReading& reading) {
  const std::string json = jsonOf(reading);
  fuzz::check(std::ranges::all_of(json, [](char c) { return c == '\n' || (c >= ' ' && c < 0x7F); }),
              "the JSON is printable ASCII");
  nlohmann::json parsed = nlohmann::json::parse(json);
  fuzz::check(parsed["blocks"].size() == reading.report.blocks.size(), "all blocks are in it");
  return parsed;
}

fuzz::HtmlPage pageOf(const ReportReading& reading) {
  std::string page;
  reader::Output output([&](std::string_view text) { page += text; });
  writeHtml(output, reading);
  output.finish();
  return fuzz::parseHtml(page);
}

void checkPage(const ReportReading& reading, const nlohmann::json& json) {
  static const std::string structure = pageOf(reader::readReport("empty", "")).structure;
  const fuzz::HtmlPage page = pageOf(reading);
  fuzz::check(page.errors == 0, "the page is HTML without a mistake");
  fuzz::check(page.structure == structure, "the page is the same but for its data");
  fuzz::check(nlohmann::json::parse(page.data) == json, "its data are the JSON");
}

/// What a terminal, or a reader of text in two directions, would obey.
bool isObeyed(char32_t c) {
  const bool isControl = (c < U' ' && c != U'\n') || (c >= 0x7F && c < 0xA0);
  const bool isDirection = c == 0x61C || c == 0x200E || c == 0x200F ||
                           (c >= 0x2028 && c < 0x202F) || (c >= 0x2066 && c < 0x206A);
  return isControl || isDirection;
}

void checkText(const std::string& text) {
  const std::optional<std::u32string> characters = fuzz::decode(text);
  fuzz::check(characters.has_value(), "a text for the terminal is UTF-8");
  fuzz::check(std::ranges::none_of(*characters, isObeyed), "a terminal obeys nothing of it");
}

void checkTexts(const ReportReading& reading) {
  static const ReportReading empty = reader::readReport("empty", "");
  checkText(textOf(reading));
  checkText(comparisonOf(empty, reading));
  checkText(comparisonOf(reading, empty));
  checkText(reader::tableOf({rowOf(reading), rowOf(reading)}));
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(fuzz::asText(data, size));
  // A file may be called anything, too.
  constexpr std::size_t nameMax = 40;
  const ReportReading reading = reader::readReport(text.substr(0, nameMax), text);
  checkAccount(text, reading.report);
  for (const Block& block : reading.report.blocks) {
    checkBlock(block);
  }
  checkTexts(reading);
  checkPage(reading, checkJson(reading));
  return 0;
}
