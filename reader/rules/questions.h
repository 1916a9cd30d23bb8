// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// What several rules ask of the facts.

#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "reader/facts/facts.h"

namespace reader {

/// "a", "a and b", "a, b and c".
std::string enumerated(const std::vector<std::string>& parts);

/// A number for people: "0.4", "12.5", "314".
std::string shown(double number);

/// Whether anything beyond the local network has answered anything.
bool anythingAnswers(const Facts& facts);

/// The queries to the machine's own resolver.
std::vector<const Query*> ownQueries(const Facts& facts);

/// The machine's own resolver was asked several times and never gave a good answer.
bool isResolutionBroken(const Facts& facts);

/// Port 53 of any server that was named, but for the machine's own.
bool isAnybodyAnsweringOnPort53(const Facts& facts);

/// None of the questions to the service's resolver A was answered, on any port, and some were
/// asked.
bool isResolverASilent(const Facts& facts);

/// The service's resolver A was asked on this port and did not answer; nothing if it was not asked.
std::optional<bool> isSilentOnPort(const Facts& facts, int port);

/// Whether the Skivra is on the machine, as far as the report shows.
bool hasSkivra(const Facts& facts);

/// Echo requests that got lost, of all that were sent to hosts that answer at all.
double lossRate(const Facts& facts);

/// The web checks of every run, as far as the report has them.
std::vector<const WebCheck*> generalChecks(const Facts& facts);

/// "203.0.113.77" of "203.0.113.77:8081/malware.htm".
std::string hostOf(std::string_view url);

/// "503 Service Unavailable" is no page of the service.
bool isErrorPage(const WebCheck& check);

/// The path comes by the same hosts again and again.
bool isLoop(const Path& path);

/// At most `countMax` of the sources, for evidence that repeats itself.
void addEvidence(std::vector<Source>& evidence, std::span<const Source> more, std::size_t countMax);

}  // namespace reader
