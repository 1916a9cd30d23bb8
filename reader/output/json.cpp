// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "reader/output/json.h"

#include <nlohmann/json.hpp>

#include <algorithm>

#include "reader/output/json_facts.h"
#include "reader/output/printable.h"

namespace reader {

namespace {

using Json = nlohmann::ordered_json;

std::string dumped(const Json& json) {
  return json.dump(-1, ' ', true, Json::error_handler_t::replace);
}

class Writer {
 public:
  Writer(Output& target, JsonUse asked) : output(target), use(asked) {}

  void write(std::string_view text) {
    if (use == JsonUse::alone) {
      output.write(text);
      return;
    }
    while (!text.empty()) {
      const std::size_t end = std::min(text.find_first_of("<>&"), text.size());
      output.write(text.substr(0, end));
      text.remove_prefix(end);
      if (!text.empty()) {
        output.write(text[0] == '<' ? "\\u003c" : text[0] == '>' ? "\\u003e" : "\\u0026");
        text.remove_prefix(1);
      }
    }
  }

  /// Another entry of an object.
  void writeText(const std::string& key, std::optional<std::string_view> text) {
    write(",\"" + key + "\":");
    writeText(text);
  }

  /// A text of any length, of which only a chunk is copied at a time.
  void writeText(std::optional<std::string_view> text) {
    if (!text) {
      write("null");
      return;
    }
    write("\"");
    while (!text->empty()) {
      const std::size_t size = chunkSize(*text);
      const std::string chunk = dumped(Json(std::string(text->substr(0, size))));
      write(std::string_view(chunk).substr(1, chunk.size() - 2));
      text->remove_prefix(size);
    }
    write("\"");
  }

 private:
  /// The size of a chunk that does not end inside a character.
  static std::size_t chunkSize(std::string_view text) {
    constexpr std::size_t chunkMax = 65536;
    if (text.size() <= chunkMax) {
      return text.size();
    }
    constexpr std::size_t characterMax = 4;
    for (std::size_t size = chunkMax; size > chunkMax - characterMax; --size) {
      if ((static_cast<unsigned char>(text[size]) & 0xC0U) != 0x80) {
        return size;
      }
    }
    return chunkMax;
  }

  Output& output;
  JsonUse use;
};

std::string_view nameOf(Severity severity) {
  switch (severity) {
    case Severity::problem:
      return "problem";
    case Severity::warning:
      return "warning";
    case Severity::note:
      break;
  }
  return "note";
}

Json findingsOf(const ReportReading& reading) {
  Json findings = Json::array();
  for (const Finding& finding : reading.findings) {
    Json evidence = Json::array();
    for (const Source& source : finding.evidence) {
      constexpr std::size_t lineMax = 1000;
      evidence.push_back({{"block", source.block},
                          {"line", source.line},
                          {"text", std::string(source.text.substr(0, lineMax))}});
    }
    findings.push_back({{"id", finding.id},
                        {"severity", nameOf(finding.severity)},
                        {"text", finding.text},
                        {"meaning", finding.meaning},
                        {"advice", finding.advice},
                        {"evidence", std::move(evidence)}});
  }
  return findings;
}

Json verdictObject(const std::vector<Finding>& findings) {
  return {{"text", verdictOf(findings)},
          {"problems", countOf(findings, Severity::problem)},
          {"warnings", countOf(findings, Severity::warning)},
          {"notes", countOf(findings, Severity::note)}};
}

Json marksOf(const Block& block) {
  Json marks = Json::array();
  const std::pair<bool, const char*> all[] = {
      {!block.standardOutput && !block.standardError && !block.isMalformed, "empty"},
      {block.isTrimmed, "trimmed"},
      {block.isCut, "cut"},
      {block.isMalformed, "unread"},
      {block.isDoubtful, "doubtful"}};
  for (const auto& [isMarked, mark] : all) {
    if (isMarked) {
      marks.push_back(mark);
    }
  }
  return marks;
}

Json lineOf(std::optional<std::string_view> stream, std::size_t line) {
  return stream ? Json(line) : Json(nullptr);
}

/// What is in no form of a block is shown as its output.
std::optional<std::string_view> shownOutput(const Block& block) {
  if (!block.isMalformed) {
    return block.standardOutput;
  }
  return block.whole.substr(std::min(block.whole.find('\n'), block.whole.size() - 1) + 1);
}

void writeBlock(Writer& writer, const Block& block, std::size_t index) {
  const bool isPlanned = block.planned != nullptr;
  const Json begin = {
      {"index", index},
      {"kind", isPlanned ? block.planned->kind : "unknown"},
      {"key", isPlanned ? block.planned->key : ""},
      {"line", block.line},
      {"marks", marksOf(block)},
      {"stdoutLine",
       block.isMalformed ? Json(block.line + 1) : lineOf(block.standardOutput, block.outputLine)},
      {"stderrLine", lineOf(block.standardError, block.errorLine)}};
  std::string text = dumped(begin);
  text.pop_back();
  writer.write(text);
  writer.writeText("name", block.name);
  writer.writeText("stdout", shownOutput(block));
  writer.writeText("stderr", block.standardError);
  writer.write("}");
}

void writeBlocks(Writer& writer, const Report& report) {
  writer.write(",\"blocks\":[");
  for (std::size_t i = 0; i < report.blocks.size(); ++i) {
    writer.write(i == 0 ? "" : ",");
    writeBlock(writer, report.blocks[i], i);
  }
  writer.write("]");
}

void writeHead(Writer& writer, const Report& report) {
  writer.write(R"(,"head":{"account":)");
  writer.writeText(report.account);
  writer.writeText("ticket", report.ticket);
  writer.write("}");
}

void writeUnread(Writer& writer, const Report& report) {
  writer.write(",\"unread\":[");
  for (std::size_t i = 0; i < report.unread.size(); ++i) {
    const Unread& unread = report.unread[i];
    writer.write((i == 0 ? "{\"line\":" : ",{\"line\":") + std::to_string(unread.line));
    writer.writeText("why", unread.why);
    writer.writeText("text", unread.text);
    writer.write("}");
  }
  writer.write("]");
}

}  // namespace

void writeJson(Output& output, const ReportReading& reading, JsonUse use) {
  Json missing = Json::array();
  for (const PlannedBlock* planned : reading.report.missing) {
    missing.push_back(nameOf(*planned));
  }
  const Json begin = {{"format", "halvik-report"},
                      {"version", 1},
                      {"file", reading.file},
                      {"verdict", verdictObject(reading.findings)},
                      {"findings", findingsOf(reading)},
                      {"facts", factsObject(reading)},
                      {"missing", std::move(missing)}};
  Writer writer(output, use);
  std::string text = dumped(begin);
  text.pop_back();
  writer.write(text);
  writeHead(writer, reading.report);
  writeBlocks(writer, reading.report);
  writeUnread(writer, reading.report);
  writer.write("}");
  if (use == JsonUse::alone) {
    output.write("\n");
  }
}

}  // namespace reader
