// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// From blocks to facts, one file a tool. Nothing is taken from a block that was shortened or that
// the report breaks off in: what is not in it may have been there.

#pragma once

#include "diagnostics/endpoints.h"
#include "reader/facts/facts.h"
#include "reader/parse/lines.h"
#include "reader/parse/report.h"

namespace reader {

/// A block that is read, and where.
struct BlockToRead {
  const Block& block;
  std::size_t index;
  const diagnostics::Endpoints& endpoints;

  std::string_view key() const { return block.planned->key; }
  Source at(const Line& line) const {
    return {.block = index, .line = line.number, .text = line.text};
  }
  /// The block's name, where it has no other line to show.
  Source title() const { return {.block = index, .line = block.line, .text = block.name}; }
  std::vector<Line> outputLines() const { return linesOf(block.output(), block.outputLine); }
  std::vector<Line> errorLines() const { return linesOf(block.error(), block.errorLine); }
  /// The first line of standard error that is not empty, else the title.
  Source firstError() const;
};

/// All facts of `report`, which must outlive them; `endpoints` are those of the plan.
Facts extractFacts(const Report& report, const diagnostics::Endpoints& endpoints);

/// What has been read of a block.
enum class Reading { read, notUnderstood };

Reading readDig(const BlockToRead& block, Facts& facts);
Reading readNslookup(const BlockToRead& block, Facts& facts);
Reading readPing(const BlockToRead& block, Facts& facts);
Reading readTraceroute(const BlockToRead& block, Facts& facts);
Reading readIfconfig(const BlockToRead& block, Facts& facts);
Reading readScutil(const BlockToRead& block, Facts& facts);
Reading readNetstat(const BlockToRead& block, Facts& facts);
Reading readCurl(const BlockToRead& block, Facts& facts);
Reading readSystemProfiler(const BlockToRead& block, Facts& facts);
Reading readSkivraFile(const BlockToRead& block, Facts& facts);
Reading readSkivraLog(const BlockToRead& block, Facts& facts);

/// Whether the text of an error says that a name could not be looked up.
bool isNameError(std::string_view error);

}  // namespace reader
