// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Web servers of the service that give nothing, an error, or a page that is not known.

#include <algorithm>

#include "reader/rules/questions.h"
#include "reader/rules/rule.h"

namespace reader {

namespace {

using Kind = WebCheck::Kind;

/// Another finding says why nothing came.
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
  for (const WebCheck* check : generalChecks(facts)) {
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

const RegisteredRule failure({.id = "web-check-fails", .rank = 530, .find = findFailure});
const RegisteredRule unknownPage({.id = "web-check-unknown", .rank = 540, .find = findUnknownPage});

}  // namespace

}  // namespace reader
