// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// halvik-report: reads what halvik-diagnostic wrote, and says what it means.

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <new>
#include <sstream>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "reader/output/compare.h"
#include "reader/output/html.h"
#include "reader/output/json.h"
#include "reader/output/output.h"
#include "reader/output/printable.h"
#include "reader/output/reading.h"
#include "reader/output/table.h"
#include "reader/output/text.h"
#include "reader/parse/input.h"

namespace {

constexpr int nothingFound = 0;
constexpr int problemFound = 1;
constexpr int unreadable = 2;

struct Options {
  bool isJson = false;
  bool isHtml = false;
  bool isComparison = false;
  std::vector<std::string> files;
};

void complain(const std::string& text) {
  std::fputs(("halvik-report: " + reader::printable(text) + '\n').c_str(), stderr);
}

bool isReadable(const reader::ReportReading& reading, std::string_view text) {
  if (!reader::isReport(reading)) {
    const std::string file = reading.file == "-" ? "standard input" : reading.file;
    complain(file + (text.empty() ? " is empty" : ": this is no report of halvik-diagnostic"));
  }
  return reader::isReport(reading);
}

int statusOf(const reader::ReportReading& reading) {
  const int problems = reader::countOf(reading.findings, reader::Severity::problem);
  return problems > 0 ? problemFound : nothingFound;
}

int showOne(const Options& options, reader::Output& output) {
  const std::string file = options.files.empty() ? "-" : options.files.front();
  const reader::Input input(file);
  const reader::ReportReading reading = reader::readReport(file, input.text());
  if (!isReadable(reading, input.text())) {
    return unreadable;
  }
  if (options.isJson) {
    writeJson(output, reading, reader::JsonUse::alone);
  } else if (options.isHtml) {
    writeHtml(output, reading);
  } else {
    output.write(reader::textOf(reading));
  }
  return statusOf(reading);
}

int compare(const Options& options, reader::Output& output) {
  const reader::Input before(options.files[0]);
  const reader::Input later(options.files[1]);
  const reader::ReportReading readings[] = {reader::readReport(options.files[0], before.text()),
                                            reader::readReport(options.files[1], later.text())};
  if (!isReadable(readings[0], before.text()) || !isReadable(readings[1], later.text())) {
    return unreadable;
  }
  output.write(reader::comparisonOf(readings[0], readings[1]));
  return statusOf(readings[1]);
}

int showTable(const Options& options, reader::Output& output) {
  std::vector<reader::TableRow> rows;
  int status = nothingFound;
  for (const std::string& file : options.files) {
    // One that cannot be read keeps nobody from reading the others.
    try {
      const reader::Input input(file);
      const reader::ReportReading reading = reader::readReport(file, input.text());
      if (isReadable(reading, input.text())) {
        rows.push_back(rowOf(reading));
        status = std::max(status, statusOf(reading));
      } else {
        status = unreadable;
      }
    } catch (const std::system_error& error) {
      complain(error.what());
      status = unreadable;
    }
  }
  if (!rows.empty()) {
    output.write(reader::tableOf(std::move(rows)));
  }
  return status;
}

int run(const Options& options) {
  reader::Output output;
  int status = nothingFound;
  if (options.isComparison) {
    status = compare(options, output);
  } else if (options.files.size() > 1) {
    status = showTable(options, output);
  } else {
    status = showOne(options, output);
  }
  output.finish();
  return status;
}

void addOptions(CLI::App& app, Options& options) {
  app.add_flag("--json", options.isJson, "Print everything as JSON, for other programs");
  app.add_flag("--html", options.isHtml, "Print one page that is complete in itself");
  app.add_flag("--compare", options.isComparison, "Print what is different in the second report");
  app.add_option("FILE", options.files, "Reports; without one, or for \"-\", standard input");
  app.set_version_flag("--version", HALVIK_VERSION);
  app.footer(
      "The status is 0 if nothing is wrong, 1 if there is at least one problem, and 2\n"
      "if something could not be read.");
}

/// Reads the options. Returns the usage or the version if the user asks for it.
std::string askedFor(CLI::App& app, int argc, char** argv) {
  std::ostringstream text;
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& asked) {
    app.exit(asked, text);
  }
  return text.str();
}

/// What does not go together.
std::string misuseOf(const Options& options) {
  const bool isForOne = options.isJson || options.isHtml;
  if (options.isJson && options.isHtml) {
    return "--json and --html exclude each other";
  }
  if (options.isComparison && isForOne) {
    return "--compare prints text only";
  }
  if (options.isComparison && options.files.size() != 2) {
    return "--compare takes two files";
  }
  if (isForOne && options.files.size() > 1) {
    return "--json and --html take one file";
  }
  if (std::ranges::count(options.files, "-") > 1) {
    return "standard input can be read once only";
  }
  return {};
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  CLI::App app("Reads what halvik-diagnostic wrote and says what it means.", "halvik-report");
  addOptions(app, options);
  try {
    if (const std::string asked = askedFor(app, argc, argv); !asked.empty()) {
      reader::writeStandardOutput(asked);
      return nothingFound;
    }
    if (const std::string misuse = misuseOf(options); !misuse.empty()) {
      complain(misuse);
      return unreadable;
    }
    return run(options);
  } catch (const CLI::ParseError& error) {
    complain(std::string(error.what()) + "; --help shows the usage");
  } catch (const std::bad_alloc&) {
    complain("there is not enough memory");
  } catch (const std::exception& error) {
    complain(error.what());
  }
  return unreadable;
}
