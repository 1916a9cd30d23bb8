// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The report: a head that names account and ticket, then one block for every command.

#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "text/utf8.h"

namespace report {

/// Opens every block; 45 hyphen-minus characters. What a command prints may hold it as well.
inline constexpr std::string_view separator = "---------------------------------------------";

/// What stands in the report about one command. The texts are views, valid UTF-8; a stream that
/// printed nothing, or that was not valid UTF-8, is absent or empty.
struct ResultBlock {
  std::string_view displayName;
  std::optional<std::string_view> standardOutput;
  std::optional<std::string_view> standardError;
};

/// The report's first lines: account and ticket, unless they are absent.
std::string headOf(const std::optional<std::string>& account,
                   const std::optional<std::string>& ticket);

/// Adds the block to a report: the separator with the command's name, then each stream that printed
/// anything. What it printed stays where it was captured, and must outlive the report.
void addBlock(text::Buffers& report, const ResultBlock& block);

}  // namespace report
