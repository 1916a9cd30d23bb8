// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "reader/output/compare.h"

#include <algorithm>
#include <cmath>

#include "reader/output/printable.h"
#include "reader/rules/questions.h"

namespace reader {

namespace {

const Finding* withId(const ReportReading& reading, std::string_view id) {
  const auto found = std::ranges::find(reading.findings, id, &Finding::id);
  return found == reading.findings.end() ? nullptr : &*found;
}

/// Whether the report has such a block, whole and not empty. An empty one has a meaning with `curl`
/// only.
bool hasResult(const Report& report, const PlannedBlock* planned) {
  return std::ranges::any_of(report.blocks, [&](const Block& block) {
    return planned != nullptr && block.planned == planned && block.isComplete() &&
           (block.standardOutput || block.standardError || planned->kind == "curl");
  });
}

/// Whether the other report has all that the finding of this one rests on.
bool isComparable(const Finding& finding, const ReportReading& reading,
                  const ReportReading& other) {
  return std::ranges::all_of(finding.evidence, [&](const Source& source) {
    return hasResult(other.report, reading.report.blocks[source.block].planned);
  });
}

std::string findingLine(std::string_view label, const Finding& finding) {
  return std::string(label) + printable(finding.text, 2000) + " [" + std::string(finding.id) +
         "]\n";
}

struct Labels {
  std::string_view absent;
  std::string_view unknown;
};

/// The findings of one reading that the other has not.
std::string findingsOnlyIn(const ReportReading& one, const ReportReading& other,
                           const Labels& labels) {
  std::string text;
  for (const Finding& finding : one.findings) {
    if (withId(other, finding.id) == nullptr) {
      text +=
          findingLine(isComparable(finding, one, other) ? labels.absent : labels.unknown, finding);
    }
  }
  return text;
}

std::string shownOrNothing(const std::string& text) {
  return text.empty() ? "(unknown)" : printable(text, 500);
}

std::string changedLine(const std::string& label, const std::string& before,
                        const std::string& later) {
  return label + ": " + shownOrNothing(before) + " -> " + shownOrNothing(later) + '\n';
}

std::string changedFacts(const ReportReading& before, const ReportReading& later) {
  const auto facts = mainFacts(before.facts);
  const auto laterFacts = mainFacts(later.facts);
  std::string text;
  for (std::size_t i = 0; i < facts.size(); ++i) {
    if (facts[i].second != laterFacts[i].second) {
      text += changedLine(facts[i].first, facts[i].second, laterFacts[i].second);
    }
  }
  return text;
}

std::string roundTrip(const Ping& ping) {
  const auto median = ping.medianMs();
  if (!median) {
    return ping.sent ? "no answer" : std::string(ping.error);
  }
  const double loss = ping.lossPercent().value_or(0);
  return shown(*median) + " ms" + (loss > 0 ? ", " + shown(loss) + " % lost" : "");
}

/// Round trips never are quite the same.
bool isOtherRoundTrip(const Ping& before, const Ping& later) {
  const auto was = before.medianMs();
  const auto is = later.medianMs();
  if (was.has_value() != is.has_value()) {
    return true;
  }
  constexpr double shareMin = 0.3;
  constexpr double msMin = 20;
  const double difference = std::abs(was.value_or(0) - is.value_or(0));
  return (difference > msMin && difference > shareMin * was.value_or(0)) ||
         before.lossPercent() != later.lossPercent();
}

std::string changedRoundTrips(const ReportReading& before, const ReportReading& later) {
  std::string text;
  for (const Ping& ping : before.facts.pings) {
    const Ping* after = later.facts.ping(ping.key);
    if (after != nullptr && isOtherRoundTrip(ping, *after)) {
      text +=
          changedLine("round trip to " + printable(ping.name), roundTrip(ping), roundTrip(*after));
    }
  }
  return text;
}

std::string way(const Path& path) {
  std::vector<std::string> hops;
  for (const Hop& hop : path.hops) {
    if (!hop.address.empty()) {
      hops.emplace_back(hop.address);
    }
  }
  return enumerated(hops) + (path.isReached() ? "" : ", which is not its end");
}

/// Silence of a hop is no other way: both ways have to disagree on the hosts at some distance.
bool isOtherWay(const Path& before, const Path& later) {
  for (const Hop& hop : before.hops) {
    for (const Hop& other : later.hops) {
      if (hop.number == other.number && !hop.address.empty() && !other.address.empty() &&
          hop.address != other.address) {
        return true;
      }
    }
  }
  return before.isReached() != later.isReached();
}

std::string changedPaths(const ReportReading& before, const ReportReading& later) {
  std::string text;
  for (const Path& path : before.facts.paths) {
    const Path* after = later.facts.path(path.key);
    if (after != nullptr && path.host == after->host && isOtherWay(path, *after)) {
      text += changedLine("way to " + printable(path.host), way(path), way(*after));
    }
  }
  return text;
}

std::string paragraph(const std::string& heading, const std::string& text) {
  return text.empty() ? text : '\n' + heading + '\n' + text;
}

}  // namespace

std::string comparisonOf(const ReportReading& before, const ReportReading& later) {
  std::string text =
      findingsOnlyIn(later, before, {"new: ", "found now, unknown in the earlier report: "}) +
      findingsOnlyIn(before, later, {"gone: ", "found before, unknown in the later report: "});
  for (const Finding& finding : later.findings) {
    if (withId(before, finding.id) != nullptr) {
      text += findingLine("still: ", finding);
    }
  }
  const std::string facts =
      changedFacts(before, later) + changedRoundTrips(before, later) + changedPaths(before, later);
  const std::string all = paragraph("Findings", text) + paragraph("What has changed", facts);
  return printable(before.file, 500) + " -> " + printable(later.file, 500) + '\n' +
         (all.empty() ? "Nothing is different.\n" : all);
}

}  // namespace reader
