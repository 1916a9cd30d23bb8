// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// What name servers said, and who they are. Texts are views into the report.

#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace reader {

/// A line of the report, with the index of its block.
struct Source {
  std::size_t block = 0;
  std::size_t line = 0;
  std::string_view text{};
};

struct Answer {
  std::string_view name{};
  std::string_view type{};
  std::string_view data{};
  Source source{};
};

/// A question to a name server.
struct Query {
  std::string_view key{};
  std::string_view name{};
  std::string_view type{};
  /// Empty: the machine's own resolver was asked.
  std::string_view server{};
  int port = 53;
  /// Such as "NOERROR"; empty if there was no answer.
  std::string_view status{};
  std::vector<Answer> answers{};
  std::optional<double> timeMs{};
  /// Address and port, as "192.0.2.53#53"; empty if unknown.
  std::string_view answeredBy{};
  std::string_view when{};
  /// Why there was no answer.
  std::string_view error{};
  /// The line with the result.
  Source source{};

  bool isAnswered() const { return !status.empty(); }
  /// An answer that is no complaint of the server.
  bool isGood() const { return status == "NOERROR" || status == "NXDOMAIN"; }
};

/// Who answered the service's debug name.
struct Resolver {
  std::string_view asked{};
  int port = 53;
  std::string_view answeredBy{};
  /// Nothing if nobody answered.
  std::optional<bool> isService{};
  std::string_view server{};
  std::string_view organization{};
  std::string_view dataCentre{};
  std::string_view askedFrom{};
  std::optional<double> timeMs{};
  std::string_view error{};
  std::string_view key{};
  Source source{};
};

/// What a name server calls itself.
struct ServerName {
  std::string_view server{};
  std::string_view name{};
  std::string_view error{};
  Source source{};
};

struct PublicAddress {
  std::string_view address{};
  std::string_view by{};
  std::string_view server{};
  Source source{};
};

struct NameServer {
  std::string_view address{};
  std::optional<int> resolver{};
  std::string_view interface{};
  std::string_view domain{};
  Source source{};
};

}  // namespace reader
