// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// What `netstat -rn` prints, on Linux and on macOS.

#include <algorithm>

#include "reader/facts/extract.h"

namespace reader {

namespace {

using Words = std::vector<std::string_view>;

/// The columns of a table of routes, by the words of its header.
struct Columns {
  std::size_t flags = 0;
  std::size_t interface = 0;
  std::optional<std::size_t> mask;
};

std::optional<std::size_t> columnOf(const Words& header, std::string_view name) {
  const auto found = std::ranges::find(header, name);
  return found == header.end() ? std::nullopt
                               : std::optional(static_cast<std::size_t>(found - header.begin()));
}

std::optional<Columns> columnsOf(const Words& header) {
  const auto flags = columnOf(header, "Flags");
  auto interface = columnOf(header, "Iface");
  if (!interface) {
    interface = columnOf(header, "Netif");
  }
  if (header.empty() || header[0] != "Destination" || !flags || !interface) {
    return std::nullopt;
  }
  return Columns{.flags = *flags, .interface = *interface, .mask = columnOf(header, "Genmask")};
}

/// With a tunnel, the way to everywhere may be two routes to a half each.
bool leadsEverywhere(std::string_view destination, std::string_view mask) {
  if (destination == "default" || destination == "0/1" || destination == "128.0/1" ||
      destination == "0.0.0.0/1" || destination == "128.0.0.0/1" || destination == "::/0") {
    return true;
  }
  const bool isHalf =
      mask == "128.0.0.0" && (destination == "0.0.0.0" || destination == "128.0.0.0");
  return isHalf || (destination == "0.0.0.0" && mask == "0.0.0.0");
}

std::optional<Route> routeIn(const BlockToRead& block, const Line& line, const Columns& columns) {
  const Words words = wordsOf(line.text);
  if (words.size() <= std::max(columns.flags, columns.interface)) {
    return std::nullopt;
  }
  const std::string_view gateway = words[1];
  const bool isLink = gateway == "0.0.0.0" || gateway == "*" || gateway.starts_with("link#");
  Route route{.destination = words[0],
              .gateway = isLink ? std::string_view() : gateway,
              .interface = words[columns.interface],
              .flags = words[columns.flags],
              .source = block.at(line)};
  // On macOS a route with the flag I is only for what is bound to its interface.
  route.isDefault = !contains(route.flags, "I") &&
                    leadsEverywhere(words[0], columns.mask ? words[*columns.mask] : "");
  return route;
}

}  // namespace

Reading readNetstat(const BlockToRead& block, Facts& facts) {
  std::optional<Columns> columns;
  bool isIpv6 = false;
  bool isRead = false;
  for (const Line& line : block.outputLines()) {
    if (line.text.starts_with("Internet6:")) {
      isIpv6 = true;
    } else if (const auto header = columnsOf(wordsOf(line.text))) {
      columns = header;
      isRead = true;
    } else if (const auto route = columns ? routeIn(block, line, *columns) : std::nullopt) {
      facts.routes.push_back(*route);
      facts.routes.back().isIpv6 = isIpv6;
    }
  }
  if (isRead) {
    facts.routeList = block.title();
  }
  const bool isEmpty = !block.block.standardOutput && !block.block.standardError;
  return isRead || isEmpty ? Reading::read : Reading::notUnderstood;
}

}  // namespace reader
