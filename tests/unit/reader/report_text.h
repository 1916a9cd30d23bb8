// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Reports for tests: one of a network in order, with some of its blocks changed.

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace reader {

/// The content of a file in tests/unit/reader/data/.
std::string dataFile(const std::string& name);

/// How many blocks the report in a file of `data` has.
std::size_t blocksIn(const std::string& name);

/// A report that can be changed block by block, named by the keys of the plan.
class ReportText {
 public:
  /// A run on Linux in a network without any trouble, with the Skivra and the domain shop.example.
  static ReportText clear() { return ReportText("clear.txt"); }
  /// The same without Skivra and domain.
  static ReportText bare() { return ReportText("clear_bare.txt"); }
  /// A run on macOS, with the Skivra and a domain, in order as well.
  static ReportText macos() { return ReportText("macos.txt"); }

  explicit ReportText(const std::string& file);

  /// What the block printed in place of what it did.
  ReportText& set(std::string_view key, std::string_view output, std::string_view error = {});
  /// The same for all blocks whose key begins so.
  ReportText& setAll(std::string_view prefix, std::string_view output, std::string_view error = {});
  /// Replaces a text wherever it stands in what blocks printed whose key begins with `prefix`. At
  /// least one must have it.
  ReportText& replace(std::string_view prefix, std::string_view from, std::string_view to);
  ReportText& remove(std::string_view key);

  std::string text() const;

 private:
  struct Part {
    std::string key;
    std::string name;
    std::string output;
    std::string error;
  };
  std::vector<Part> parts;
};

/// The identifiers of what is found, in order: problems, and warnings and notes with their kind
/// before them.
std::vector<std::string> found(const ReportText& report);
std::vector<std::string> found(const std::string& text);

/// The sentence of the first finding.
std::string firstText(const ReportText& report);

/// The lines that it was concluded from, each with the key of its block, as "routes: default ...".
std::vector<std::string> firstEvidence(const ReportText& report);

/// What dig prints when an answer comes.
std::string digAnswer(const std::string& records, const std::string& server = "192.168.1.1#53",
                      const std::string& status = "NOERROR");

/// What it prints when none comes, such as for "connection refused".
std::string digFailure(const std::string& server, const std::string& why);

/// What ping prints on Linux.
std::string pingOutput(const std::string& address, const std::vector<double>& timesMs,
                       std::size_t sent = 5);

}  // namespace reader
