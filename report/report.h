// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The report: a head that names account and ticket, then one block for every command.

#pragma once

#include <memory>
#include <optional>
#include <span>
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

/// The block as text: the separator with the command's name, then each stream that printed
/// anything.
std::string formatBlock(const ResultBlock& block);

/// The whole report, as a row of pieces: what the commands printed stays where it was captured and
/// is not copied, so the blocks that a report was made of must outlive it. Copies share their head.
class Report {
 public:
  Report() = default;

  /// A report with a head line for the account and for the ticket, unless they are absent, then all
  /// blocks.
  Report(const std::optional<std::string>& account, const std::optional<std::string>& ticket,
         std::span<const ResultBlock> blocks);

  /// The report in order.
  const text::Buffers& buffers() const { return parts; }

  bool empty() const { return parts.empty(); }

 private:
  std::shared_ptr<const std::string> head;
  text::Buffers parts;
};

}  // namespace report
