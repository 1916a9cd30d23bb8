// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The Skivra, where it is installed.

#include <algorithm>

#include "reader/rules/questions.h"
#include "reader/rules/rule.h"

namespace reader {

namespace {

std::optional<Finding> findSilence(const Facts& facts) {
  const Query* query = facts.query("skivra-debug");
  if (query == nullptr || !hasSkivra(facts) || query->isAnswered()) {
    return std::nullopt;
  }
  return Finding{.text = "The Skivra is installed, but its resolver does not answer.",
                 .meaning =
                     "If the machine asks the Skivra, it can look up no names; if it asks "
                     "others, it is not protected.",
                 .advice =
                     "Restart the machine. If that does not help, install the Skivra again and "
                     "send its logs to the service's staff.",
                 .evidence = {query->source}};
}

std::optional<Finding> findMissingState(const Facts& facts) {
  if (facts.skivra.isInstalled != true || facts.skivra.stateFile != Skivra::File::missing) {
    return std::nullopt;
  }
  return Finding{.text = "The Skivra is installed, but its state file is missing.",
                 .meaning =
                     "The Skivra has never finished its set-up, or has lost what it knows of "
                     "its organization, so the wrong rules may apply.",
                 .advice = "Install the Skivra again.",
                 .evidence = {*facts.skivra.stateSource, *facts.skivra.folderSource}};
}

std::optional<Finding> findBypass(const Facts& facts) {
  if (!hasSkivra(facts) || facts.nameServers.empty()) {
    return std::nullopt;
  }
  std::vector<std::string> servers;
  Finding finding{.meaning =
                      "What this machine looks up does not go through the Skivra, so its "
                      "protection ends when the machine leaves a network that uses the "
                      "service.",
                  .advice =
                      "See which program or person changed the resolvers in the network "
                      "settings, and restart the Skivra."};
  for (const NameServer& server : facts.nameServers) {
    // A server for one domain is asked about nothing else.
    if (!server.domain.empty()) {
      continue;
    }
    if (isLoopbackAddress(server.address)) {
      return std::nullopt;
    }
    servers.emplace_back(server.address);
    finding.evidence.push_back(server.source);
  }
  if (servers.empty()) {
    return std::nullopt;
  }
  finding.text =
      "The Skivra is installed, but the machine asks " + enumerated(servers) + " in place of it.";
  return finding;
}

std::optional<Finding> findNotInstalled(const Facts& facts) {
  if (facts.skivra.isInstalled != false) {
    return std::nullopt;
  }
  return Finding{
      .severity = Severity::note,
      .text = "The Skivra's tests were asked for, but it is not installed.",
      .meaning = "What the report shows about the Skivra says nothing about the machine.",
      .advice = "Install the Skivra if it is meant to be there.",
      .evidence = {*facts.skivra.folderSource}};
}

const RegisteredRule silence({.id = "skivra-silent",
                              .rank = 435,
                              .explains = {"name-resolution-fails", "name-resolution-unsteady",
                                           "service-not-used"},
                              .find = findSilence});
const RegisteredRule missingState(
    {.id = "skivra-no-state", .rank = 460, .subject = Subject::machine, .find = findMissingState});
const RegisteredRule bypass(
    {.id = "skivra-not-used", .rank = 470, .subject = Subject::machine, .find = findBypass});
const RegisteredRule notInstalled({.id = "skivra-not-installed",
                                   .rank = 710,
                                   .subject = Subject::machine,
                                   .find = findNotInstalled});

}  // namespace

}  // namespace reader
