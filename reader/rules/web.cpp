// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// What web servers answered: the service's own page, a block page, a portal's, or nothing.

#include <algorithm>
#include <array>

#include "reader/parse/lines.h"
#include "reader/rules/questions.h"
#include "reader/rules/rule.h"

namespace reader {

namespace {

using Kind = WebCheck::Kind;

// Those of every run.
constexpr std::array generalChecks{"web-block-id", "web-monitor", "web-block-id-head",
                                   "web-block-page", "web-by-number"};

std::vector<const WebCheck*> generalChecksOf(const Facts& facts) {
  std::vector<const WebCheck*> checks;
  for (const std::string_view key : generalChecks) {
    if (const WebCheck* check = facts.webCheck(key)) {
      checks.push_back(check);
    }
  }
  return checks;
}

std::string hostOf(std::string_view url) {
  return std::string(url.substr(0, url.find_first_of("/:")));
}

/// The host of a whole address, such as that of a redirect.
std::string_view hostOfAddress(std::string_view address) {
  const std::size_t begin = address.find("://");
  if (begin == std::string_view::npos) {
    return {};
  }
  address.remove_prefix(begin + 3);
  return address.substr(0, address.find_first_of("/:"));
}

bool isPortalRedirect(const Facts& facts, const WebCheck& check) {
  return std::ranges::any_of(check.redirects, [&](std::string_view target) {
    const std::string_view host = hostOfAddress(target);
    return !host.empty() && !host.ends_with(facts.endpoints.serviceDomain);
  });
}

std::optional<Finding> findPortal(const Facts& facts) {
  Finding finding{
      .text = "A captive portal answers web requests in place of the servers",
      .meaning =
          "The network wants its users to log in or to agree to something first. Until then, "
          "no page opens.",
      .advice =
          "Open any page in a browser, do what the portal asks for, and run the diagnostic "
          "again."};
  std::string_view title;
  bool isRedirected = false;
  bool isRepeated = false;
  std::vector<std::string_view> texts;
  for (const WebCheck* check : generalChecksOf(facts)) {
    if (check->kind == Kind::expected || check->kind == Kind::blockPage) {
      return std::nullopt;
    }
    if (check->kind == Kind::otherPage) {
      isRedirected |= isPortalRedirect(facts, *check);
      isRepeated |= std::ranges::find(texts, check->text) != texts.end();
      texts.push_back(check->text);
      title = title.empty() ? check->title : title;
      finding.evidence.push_back(check->source);
    }
  }
  if (finding.evidence.size() < 2 || !(isRedirected || isRepeated)) {
    return std::nullopt;
  }
  finding.text += title.empty() ? "." : ", with the title \"" + std::string(title) + "\".";
  return finding;
}

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

std::optional<Finding> findNoBlockPage(const Facts& facts) {
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
    if (check != nullptr && (check->kind == Kind::expected || check->kind == Kind::otherPage)) {
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

/// Another finding tells why nothing came.
bool isExplained(const Facts& facts, const WebCheck& check) {
  const std::string host = hostOf(check.url);
  if (!isIpv4Address(host) && isResolutionBroken(facts)) {
    return true;
  }
  // These have two seconds only.
  const bool isHasty = check.error.starts_with("curl: (28)");
  const Ping* website = facts.ping("ping-website");
  if (isHasty && website != nullptr && website->medianMs() > 300) {
    return true;
  }
  return std::ranges::any_of(facts.paths, [&](const Path& path) {
    return path.host == host && !path.address.empty() && !path.isReached();
  });
}

/// "503 Service Unavailable" is no page of the service.
bool isErrorPage(const WebCheck& check) {
  const auto code = wholeNumber(check.title.substr(0, 3));
  return check.status >= 400 || code >= 400;
}

std::string reasonOf(const WebCheck& check) {
  if (!check.error.empty()) {
    return std::string(check.error);
  }
  if (check.kind != Kind::nothing) {
    return check.title.empty() ? "status " + std::to_string(check.status.value_or(0))
                               : std::string(check.title);
  }
  return "nothing came";
}

bool isFailed(const Facts& facts, const WebCheck& check) {
  const bool isWrong =
      check.kind == Kind::nothing || (check.kind == Kind::otherPage && isErrorPage(check));
  return isWrong && !isExplained(facts, check);
}

std::optional<Finding> findFailure(const Facts& facts) {
  std::vector<std::string> failed;
  Finding finding{.meaning =
                      "These servers cannot be used from here, or answer with an error. Block "
                      "pages and the service's web site may not show.",
                  .advice =
                      "Open the same addresses in a browser. If they fail there too, ask the "
                      "service's staff; if not, look for a program that filters web requests."};
  for (const WebCheck& check : facts.webChecks) {
    if (isFailed(facts, check)) {
      failed.push_back(std::string(check.url) + " (" + reasonOf(check) + ")");
      finding.evidence.push_back(check.source);
    }
  }
  if (failed.empty()) {
    return std::nullopt;
  }
  finding.text = "Web servers of the service give no page: " + enumerated(failed) + ".";
  return finding;
}

std::optional<Finding> findUnknownPage(const Facts& facts) {
  std::vector<std::string> urls;
  Finding finding{.severity = Severity::warning,
                  .meaning =
                      "Something else may answer in place of the service, or the service has "
                      "changed its page.",
                  .advice = "Look at what it says."};
  for (const WebCheck* check : generalChecksOf(facts)) {
    if (check->kind == Kind::otherPage && !isErrorPage(*check)) {
      urls.emplace_back(check->url);
      finding.evidence.push_back(check->source);
    }
  }
  if (urls.empty()) {
    return std::nullopt;
  }
  finding.text = "A page that is not the service's usual one came from " + enumerated(urls) + ".";
  return finding;
}

const RegisteredRule portal({.id = "captive-portal",
                             .rank = 500,
                             .explains = {"unexpected-block-page", "no-block-page",
                                          "web-check-fails", "web-check-unknown"},
                             .find = findPortal});
const RegisteredRule blockPage({.id = "unexpected-block-page",
                                .rank = 510,
                                .explains = {"answers-differ", "domain-blocked"},
                                .find = findBlockPage});
const RegisteredRule noBlockPage({.id = "no-block-page", .rank = 520, .find = findNoBlockPage});
const RegisteredRule failure({.id = "web-check-fails", .rank = 530, .find = findFailure});
const RegisteredRule unknownPage({.id = "web-check-unknown", .rank = 540, .find = findUnknownPage});

}  // namespace

}  // namespace reader
