// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// A portal that answers in place of all web servers.

#include <algorithm>

#include "reader/rules/questions.h"
#include "reader/rules/rule.h"

namespace reader {

namespace {

using Kind = WebCheck::Kind;

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

/// Servers that are out of order give errors themselves, all of them the same one. An error that a
/// portal gives says that one has to log in, or comes where the portal has led to.
bool mayBeOfPortal(const Facts& facts, const WebCheck& check) {
  const bool asksForLogin = check.status == 511 || check.title.starts_with("511");
  return check.kind == Kind::otherPage &&
         (!isErrorPage(check) || asksForLogin || isPortalRedirect(facts, check));
}

/// Most pages begin with the same line, so that one proves nothing.
bool isSamePage(const WebCheck& a, const WebCheck& b) {
  return a.title.empty() && b.title.empty() ? a.page == b.page : a.title == b.title;
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
  std::vector<const WebCheck*> pages;
  for (const WebCheck* check : generalChecks(facts)) {
    if (check->kind == Kind::expected || check->kind == Kind::blockPage) {
      return std::nullopt;
    }
    if (mayBeOfPortal(facts, *check)) {
      isRedirected |= isPortalRedirect(facts, *check);
      isRepeated |= std::ranges::any_of(
          pages, [&](const WebCheck* page) { return isSamePage(*page, *check); });
      pages.push_back(check);
      title = title.empty() ? check->title : title;
      finding.evidence.push_back(check->source);
    }
  }
  if (pages.size() < 2 || !(isRedirected || isRepeated)) {
    return std::nullopt;
  }
  finding.text += title.empty() ? "." : ", with the title \"" + std::string(title) + "\".";
  return finding;
}

const RegisteredRule portal({.id = "captive-portal",
                             .rank = 500,
                             .explains = {"unexpected-block-page", "no-block-page",
                                          "web-check-fails", "web-check-unknown"},
                             .find = findPortal});

}  // namespace

}  // namespace reader
