// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// What `ifconfig -a` prints, on Linux and on macOS.

#include "reader/facts/extract.h"

namespace reader {

namespace {

Interface::Kind kindOf(std::string_view name, std::string_view flags) {
  if (contains(flags, "LOOPBACK")) {
    return Interface::Kind::loopback;
  }
  // Some of them are said to be tunnels, as a line of a mobile network has two ends.
  for (const std::string_view modem : {"ww", "rmnet", "pdp_ip"}) {
    if (name.starts_with(modem)) {
      return Interface::Kind::other;
    }
  }
  for (const std::string_view tunnel :
       {"utun", "tun", "tap", "vpn", "wg", "ppp", "ipsec", "gpd", "tailscale", "cscotun"}) {
    if (name.starts_with(tunnel)) {
      return Interface::Kind::tunnel;
    }
  }
  for (const std::string_view card : {"en", "eth", "wl", "usb"}) {
    if (name.starts_with(card)) {
      return Interface::Kind::ethernet;
    }
  }
  return contains(flags, "POINTOPOINT") && !name.starts_with("gif") ? Interface::Kind::tunnel
                                                                    : Interface::Kind::other;
}

/// "eth0: flags=4163<UP,BROADCAST,RUNNING,MULTICAST>  mtu 1500".
std::optional<Interface> firstLine(const BlockToRead& block, const Line& line) {
  const std::size_t colon = line.text.find(": flags=");
  if (colon == std::string_view::npos || line.text[0] == ' ' || line.text[0] == '\t') {
    return std::nullopt;
  }
  const std::string_view flags = between(line.text, "<", ">").value_or("");
  Interface interface{.name = line.text.substr(0, colon), .source = block.at(line)};
  interface.kind = kindOf(interface.name, flags);
  interface.isUp = flags == "UP" || flags.starts_with("UP,") || contains(flags, ",UP,") ||
                   flags.ends_with(",UP");
  if (const std::size_t mtu = line.text.find(" mtu "); mtu != std::string_view::npos) {
    const std::vector<std::string_view> words = wordsOf(line.text.substr(mtu + 5));
    interface.mtu = words.empty() ? std::nullopt : wholeNumber(words[0]);
  }
  return interface;
}

void readAddress(const Line& line, Interface& interface) {
  const std::vector<std::string_view> words = wordsOf(line.text);
  if (words.size() > 1 && (words[0] == "inet" || words[0] == "inet6")) {
    interface.addresses.push_back(words[1].substr(0, words[1].find('%')));
  }
}

}  // namespace

Reading readIfconfig(const BlockToRead& block, Facts& facts) {
  const std::size_t before = facts.interfaces.size();
  for (const Line& line : block.outputLines()) {
    if (line.text.empty()) {
      continue;
    }
    if (const auto interface = firstLine(block, line)) {
      facts.interfaces.push_back(*interface);
    } else if (facts.interfaces.size() > before) {
      readAddress(line, facts.interfaces.back());
    }
  }
  if (facts.interfaces.size() > before) {
    facts.interfaceList = block.title();
    return Reading::read;
  }
  const bool isEmpty = !block.block.standardOutput && !block.block.standardError;
  return isEmpty ? Reading::read : Reading::notUnderstood;
}

}  // namespace reader
