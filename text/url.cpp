// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "text/url.h"

#include <strings.h>

#include <algorithm>
#include <string_view>

namespace text {

std::string hostOfUrl(const std::string& url) {
  constexpr std::string_view mark = "://";
  const std::size_t begin = url.find(mark);
  if (begin == std::string::npos) {
    return "";
  }
  std::string host = url.substr(begin + mark.size());
  host.erase(std::min(host.find_first_of("/?#"), host.size()));
  host.erase(0, host.rfind('@') + 1);
  // The colons of an IPv6 address stand between brackets.
  const std::size_t port = host.find(':', host.starts_with('[') ? host.find(']') : 0);
  host.erase(std::min(port, host.size()));
  return host;
}

bool isWebUrl(const std::string& url) {
  const auto begins = [&](std::string_view scheme) {
    return strncasecmp(url.c_str(), scheme.data(), scheme.size()) == 0;
  };
  return (begins("http://") || begins("https://")) && !hostOfUrl(url).empty();
}

}  // namespace text
