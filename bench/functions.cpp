// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// What is done to every byte of a report, beside memcpy of the same bytes.

#include <benchmark/benchmark.h>

#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "report/multipart.h"
#include "report/report.h"
#include "report/trim.h"
#include "text/utf8.h"

namespace {

constexpr std::size_t reportBytes = 16UL << 20;
constexpr std::size_t logBytes = 4096;

std::string repeated(std::string_view text, std::size_t size) {
  std::string all;
  all.reserve(size + text.size());
  while (all.size() < size) {
    all += text;
  }
  return all;
}

const std::string& englishText() {
  static const std::string text =
      repeated("Nov 21 10:15:02 agent[321]: a line as a log might hold it\n", reportBytes);
  return text;
}

// Two, three and four bytes a character, and words between them.
const std::string& mixedText() {
  static const std::string text = repeated(
      "Zeit: 12 \u00b5s, gr\u00f6\u00dfer \u2192 \u30ed\u30b0 \U0001F310 ok\n", reportBytes);
  return text;
}

// A report of `sections` sections of which every second one may be trimmed.
std::string reportOf(std::size_t sections, std::size_t size) {
  const std::string content = repeated("a line of output\n", size / sections - 80);
  std::string body;
  for (std::size_t i = 0; i < sections; ++i) {
    body += report::separator;
    body += i % 2 == 0 ? "Results for: tail -n 1\n" : "Results for: dig\n";
    body += content;
  }
  return body;
}

void countBytes(benchmark::State& state, std::size_t bytes) {
  state.SetBytesProcessed(static_cast<std::int64_t>(bytes) * state.iterations());
}

// Into a new text each time, as everything here is made: beyond 32 MB that is memory which the
// system hands out anew.
void copy(benchmark::State& state) {
  const std::string text = repeated("x", static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    std::string copied;
    copied.reserve(text.size());
    std::memcpy(copied.data(), text.data(), text.size());
    benchmark::DoNotOptimize(copied.data());
  }
  countBytes(state, text.size());
}
BENCHMARK(copy)
    ->ArgName("bytes")
    ->Arg(reportBytes)
    ->Arg(1'100'000)
    ->Arg(50'000'000)
    ->Arg(100'000'000)
    ->Arg(200'000'000);

void assembleReport(benchmark::State& state) {
  const std::string& text = englishText();
  std::vector<report::ResultBlock> blocks;
  for (std::size_t i = 0; i + logBytes <= text.size(); i += logBytes) {
    blocks.push_back({.displayName = "/bin/sh -c cat \"a log\"",
                      .standardOutput = std::string_view(text).substr(i, logBytes),
                      .standardError = std::nullopt});
  }
  for (auto _ : state) {
    text::Buffers results;
    for (const report::ResultBlock& block : blocks) {
      report::addBlock(results, block);
    }
    benchmark::DoNotOptimize(text::join(results, text::Until::firstNul).data());
  }
  countBytes(state, text.size());
}
BENCHMARK(assembleReport);

void checkText(benchmark::State& state, const std::string& text) {
  for (auto _ : state) {
    benchmark::DoNotOptimize(text::isUtf8(text));
  }
  countBytes(state, text.size());
}
BENCHMARK_CAPTURE(checkText, english, englishText());
BENCHMARK_CAPTURE(checkText, mixed, mixedText());

void buildMultipartBody(benchmark::State& state) {
  const std::string& text = englishText();
  for (auto _ : state) {
    benchmark::DoNotOptimize(report::postRequestWithURL("", "boundary", text).body.data());
  }
  countBytes(state, text.size());
}
BENCHMARK(buildMultipartBody);

void trim(benchmark::State& state) {
  const std::string body =
      reportOf(static_cast<std::size_t>(state.range(0)), static_cast<std::size_t>(state.range(1)));
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        report::trimTailData(body, static_cast<std::int32_t>(state.range(2))).data());
  }
  countBytes(state, body.size());
}
BENCHMARK(trim)
    ->ArgNames({"sections", "bytes", "limit"})
    // Cut, a little too large.
    ->Args({72, 16 << 20, (16 << 20) - 100'000})
    ->Args({72, 1'100'000, 1'000'000})
    // So large that nothing can be cut, as many sections as there are kilobytes.
    ->Args({50'000, 50'000'000, 1'000'000})
    ->Args({100'000, 100'000'000, 1'000'000})
    ->Args({200'000, 200'000'000, 1'000'000});

// A report whose excess is one long log, which may be trimmed or not.
void trimLongLog(benchmark::State& state, std::string_view title) {
  std::string body = reportOf(70, 900'000);
  body += report::separator;
  body += title;
  body += repeated("a line of output\n", reportBytes - body.size());
  for (auto _ : state) {
    benchmark::DoNotOptimize(report::trimTailData(body, 1'000'000).data());
  }
  countBytes(state, body.size());
}
BENCHMARK_CAPTURE(trimLongLog, cut, "Results for: /usr/bin/tail -n 15000 log\n");
BENCHMARK_CAPTURE(trimLongLog, whole, "Results for: /bin/sh -c cat \"a log\"\n");

}  // namespace
