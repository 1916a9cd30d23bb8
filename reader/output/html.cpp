// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "reader/output/html.h"

#include <algorithm>
#include <cstdint>

#include "reader/output/json.h"
#include "reader/output/page.h"

namespace reader {

namespace {

std::uint32_t hexDigit(char c) {
  return static_cast<std::uint32_t>(c <= '9' ? c - '0' : c - 'a' + 10);
}

/// Bytes as hexadecimal digits, as base64.
std::string base64OfHex(std::string_view hex) {
  constexpr std::string_view digits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (std::size_t begin = 0; begin < hex.size(); begin += 6) {
    std::uint32_t bits = 0;
    for (std::size_t i = begin; i < begin + 6; ++i) {
      bits = bits * 16 + (i < hex.size() ? hexDigit(hex[i]) : 0);
    }
    for (int shift = 18; shift >= 0; shift -= 6) {
      text += digits[(bits >> static_cast<unsigned>(shift)) & 63U];
    }
  }
  const std::size_t missing = (6 - hex.size() % 6) % 6 / 2;
  return text.replace(text.size() - missing, missing, missing, '=');
}

/// Nothing but the page's own style and script, and nothing from elsewhere.
std::string policy() {
  return "default-src 'none'; style-src 'sha256-" + base64OfHex(page::styleSha256) +
         "'; script-src 'sha256-" + base64OfHex(page::scriptSha256) +
         "'; base-uri 'none'; form-action 'none'";
}

}  // namespace

void writeHtml(Output& output, const ReportReading& reading) {
  std::string_view rest = page::markup;
  while (!rest.empty()) {
    const std::size_t at = std::min(rest.find('@'), rest.size());
    output.write(rest.substr(0, at));
    rest.remove_prefix(at);
    if (rest.starts_with("@CSP@")) {
      output.write(policy());
    } else if (rest.starts_with("@STYLE@")) {
      output.write(page::style);
    } else if (rest.starts_with("@SCRIPT@")) {
      output.write(page::script);
    } else if (rest.starts_with("@DATA@")) {
      writeJson(output, reading, JsonUse::inPage);
    } else {
      output.write(rest.substr(0, 1));
      rest.remove_prefix(std::min<std::size_t>(1, rest.size()));
      continue;
    }
    rest.remove_prefix(rest.find('@', 1) + 1);
  }
}

}  // namespace reader
