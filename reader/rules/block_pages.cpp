// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Block pages that stand where none should be, or are missing where one should be.

#include <algorithm>

#include "reader/rules/questions.h"
#include "reader/rules/rule.h"

namespace reader {

namespace {

using Kind = WebCheck::Kind;

/// Where the block page is, by the path to it.
std::string_view blockPageAddress(const Facts& facts) {
  const Path* path = facts.path("path-block-page");
  return path == nullptr ? std::string_view() : path->address;
}

void addLedNames(const Facts& facts, std::vector<std::string>& names, Finding& finding) {
  const std::string_view address = blockPageAddress(facts);
  if (address.empty()) {
    return;
  }
  for (const std::string_view key : {"path-api", "path-monitor", "path-category-hit"}) {
    const Path* path = facts.path(key);
    if (path != nullptr && path->address == address) {
      names.emplace_back(path->host);
      finding.evidence.push_back(path->source);
    }
  }
  const Ping* website = facts.ping("ping-website");
  if (website != nullptr && website->address == address) {
    names.emplace_back(website->host);
    finding.evidence.push_back(website->source);
  }
}

std::optional<Finding> findBlockPage(const Facts& facts) {
  std::vector<std::string> names;
  Finding finding{.meaning =
                      "The filter blocks what it must not block, so the customer cannot open "
                      "harmless pages.",
                  .advice =
                      "Look at the organization's block lists, and have the service's staff "
                      "check the categories of these names."};
  addLedNames(facts, names, finding);
  for (const std::string_view key : {"web-block-id", "web-monitor", "web-by-number",
                                     "web-grey-allowed", "web-grey-allowed-8081"}) {
    const WebCheck* check = facts.webCheck(key);
    if (check == nullptr || check->kind != Kind::blockPage) {
      continue;
    }
    const std::string host = hostOf(check->url);
    if (std::ranges::find(names, host) == names.end()) {
      names.push_back(host);
    }
    finding.evidence.push_back(check->source);
  }
  if (names.empty()) {
    return std::nullopt;
  }
  finding.text = "A block page stands where none should be: at " + enumerated(names) + ".";
  return finding;
}

/// Whether some other page came. An error is none: another finding reports it.
bool isOpen(const WebCheck& check) {
  return check.kind == Kind::expected || (check.kind == Kind::otherPage && !isErrorPage(check));
}

std::optional<Finding> findNoBlockPage(const Facts& facts) {
  // It is the Skivra that blocks by address.
  if (facts.skivra.isInstalled == false) {
    return std::nullopt;
  }
  std::vector<std::string> urls;
  Finding finding{.meaning =
                      "The filter does not block by address what it should, so harmful pages "
                      "open.",
                  .advice =
                      "Check that the Skivra's blocking of addresses is switched on for the "
                      "organization, and send its logs to the service's staff."};
  for (const std::string_view key :
       {"web-blocked-ip", "web-grey-blocked", "web-grey-blocked-8081"}) {
    const WebCheck* check = facts.webCheck(key);
    if (check != nullptr && isOpen(*check)) {
      urls.emplace_back(check->url);
      finding.evidence.push_back(check->source);
    }
  }
  if (urls.empty()) {
    return std::nullopt;
  }
  finding.text = "No block page stands where one should be: at " + enumerated(urls) + ".";
  return finding;
}

const RegisteredRule blockPage({.id = "unexpected-block-page",
                                .rank = 510,
                                .explains = {"answers-differ", "domain-blocked"},
                                .find = findBlockPage});
const RegisteredRule noBlockPage({.id = "no-block-page", .rank = 520, .find = findNoBlockPage});

}  // namespace

}  // namespace reader
