// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "report_text.h"

#include <algorithm>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "reader/output/reading.h"
#include "reader/parse/lines.h"
#include "reader/parse/titles.h"

namespace reader {

std::string dataFile(const std::string& name) {
  std::ifstream file(HALVIK_READER_DATA "/" + name, std::ios::binary);
  if (!file) {
    throw std::runtime_error("no file " + name + " in tests/unit/reader/data");
  }
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

std::size_t blocksIn(const std::string& name) {
  const std::string text = dataFile(name);
  std::size_t count = 0;
  for (std::size_t at = text.find(separator); at != std::string::npos;
       at = text.find(separator, at + separator.size())) {
    ++count;
  }
  return count;
}

ReportText::ReportText(const std::string& file) {
  const std::string text = dataFile(file);
  const ReportReading reading = readReport(file, text);
  for (const Block& block : reading.report.blocks) {
    parts.push_back({.key = block.planned == nullptr ? "" : block.planned->key,
                     .name = std::string(block.name),
                     .output = std::string(block.output()),
                     .error = std::string(block.error())});
  }
}

ReportText& ReportText::set(std::string_view key, std::string_view output, std::string_view error) {
  bool isThere = false;
  for (Part& part : parts) {
    if (part.key == key) {
      part.output = output;
      part.error = error;
      isThere = true;
    }
  }
  if (!isThere) {
    throw std::logic_error("no block " + std::string(key));
  }
  return *this;
}

ReportText& ReportText::setAll(std::string_view prefix, std::string_view output,
                               std::string_view error) {
  for (Part& part : parts) {
    if (part.key.starts_with(prefix)) {
      part.output = output;
      part.error = error;
    }
  }
  return *this;
}

ReportText& ReportText::replace(std::string_view prefix, std::string_view from,
                                std::string_view to) {
  bool isThere = false;
  for (Part& part : parts) {
    for (std::string* stream : {&part.output, &part.error}) {
      std::size_t at = part.key.starts_with(prefix) ? stream->find(from) : std::string::npos;
      while (at != std::string::npos) {
        stream->replace(at, from.size(), to);
        at = stream->find(from, at + to.size());
        isThere = true;
      }
    }
  }
  if (!isThere) {
    throw std::logic_error("nowhere: " + std::string(from));
  }
  return *this;
}

ReportText& ReportText::remove(std::string_view key) {
  std::erase_if(parts, [&](const Part& part) { return part.key == key; });
  return *this;
}

std::string ReportText::text() const {
  std::string text;
  for (const Part& part : parts) {
    text += std::string(45, '-') + "Results for: " + part.name + '\n';
    if (!part.output.empty()) {
      text += "stdout:\n" + part.output + '\n';
    }
    if (!part.error.empty()) {
      text += "stderr:\n" + part.error + '\n';
    }
  }
  return text;
}

std::vector<std::string> found(const std::string& text) {
  const ReportReading reading = readReport("test", text);
  std::vector<std::string> ids;
  for (const Finding& finding : reading.findings) {
    const char* kind = finding.severity == Severity::problem   ? ""
                       : finding.severity == Severity::warning ? "warning "
                                                               : "note ";
    ids.push_back(kind + std::string(finding.id));
    if (finding.evidence.empty() || finding.text.empty() || finding.meaning.empty() ||
        finding.advice.empty()) {
      ids.push_back("INCOMPLETE");
    }
  }
  return ids;
}

std::vector<std::string> found(const ReportText& report) {
  return found(report.text());
}

std::string firstText(const ReportText& report) {
  const std::string text = report.text();
  const ReportReading reading = readReport("test", text);
  return reading.findings.empty() ? "" : reading.findings.front().text;
}

std::vector<std::string> firstEvidence(const ReportText& report) {
  const std::string text = report.text();
  const ReportReading reading = readReport("test", text);
  std::vector<std::string> lines;
  if (!reading.findings.empty()) {
    for (const Source& source : reading.findings.front().evidence) {
      const Block& block = reading.report.blocks[source.block];
      lines.push_back((block.planned == nullptr ? "" : block.planned->key) + ": " +
                      std::string(trimmed(source.text)));
    }
  }
  return lines;
}

std::string digAnswer(const std::string& records, const std::string& server,
                      const std::string& status) {
  return "\n; <<>> DiG 9.18.33 <<>> something\n;; global options: +cmd\n;; Got answer:\n"
         ";; ->>HEADER<<- opcode: QUERY, status: " +
         status + ", id: 3280\n\n;; ANSWER SECTION:\n" + records +
         "\n;; Query time: 28 msec\n;; SERVER: " + server + "(" +
         server.substr(0, server.find('#')) +
         ") (UDP)\n;; WHEN: Sun Nov 22 02:47:05 UTC 2026\n;; MSG SIZE  rcvd: 64\n\n";
}

std::string digFailure(const std::string& server, const std::string& why) {
  const std::string line = ";; communications error to " + server + ": " + why + "\n";
  return line + line + line +
         "\n; <<>> DiG 9.18.33 <<>> something\n;; global options: +cmd\n"
         ";; no servers could be reached\n";
}

std::string pingOutput(const std::string& address, const std::vector<double>& timesMs,
                       std::size_t sent) {
  std::ostringstream text;
  text << "PING host (" << address << ") 56(84) bytes of data.\n";
  for (std::size_t i = 0; i < timesMs.size(); ++i) {
    text << "64 bytes from host (" << address << "): icmp_seq=" << i + 1
         << " ttl=61 time=" << timesMs[i] << " ms\n";
  }
  const std::size_t lost = std::max(sent, timesMs.size()) - timesMs.size();
  text << "\n--- host ping statistics ---\n"
       << sent << " packets transmitted, " << timesMs.size() << " received, "
       << (sent == 0 ? 0 : 100 * lost / sent) << "% packet loss, time 4006ms\n";
  return text.str();
}

}  // namespace reader
