// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The machine's clock, beside that of a web server.

#include <array>
#include <chrono>
#include <cmath>

#include "reader/parse/lines.h"
#include "reader/rules/questions.h"
#include "reader/rules/rule.h"

namespace reader {

namespace {

using Minutes = std::chrono::sys_time<std::chrono::minutes>;

struct Moment {
  Minutes time;
  /// Whether its time zone is known to be UTC. Otherwise it may be off by any time zone.
  bool isUtc = false;
};

std::optional<unsigned> monthOf(std::string_view word) {
  constexpr std::array names{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                             "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  for (unsigned i = 0; i < names.size(); ++i) {
    if (word == names[i]) {
      return i + 1;
    }
  }
  return std::nullopt;
}

std::optional<Minutes> timeOf(std::string_view day, std::string_view month, std::string_view year,
                              std::string_view clock) {
  const auto dayNumber = wholeNumber(day);
  const auto monthNumber = monthOf(month);
  const auto yearNumber = wholeNumber(year);
  const auto hour = wholeNumber(clock.substr(0, clock.find(':')));
  const auto minute = wholeNumber(clock.substr(clock.find(':') + 1).substr(0, 2));
  if (!dayNumber || !monthNumber || !yearNumber || !hour || !minute || *yearNumber > 9999) {
    return std::nullopt;
  }
  const std::chrono::year_month_day date{std::chrono::year(*yearNumber),
                                         std::chrono::month(*monthNumber),
                                         std::chrono::day(static_cast<unsigned>(*dayNumber))};
  if (!date.ok()) {
    return std::nullopt;
  }
  return std::chrono::sys_days(date) + std::chrono::hours(*hour) + std::chrono::minutes(*minute);
}

/// As dig prints it: "Sun Nov 22 02:46:58 UTC 2026", in older versions without the zone.
std::optional<Moment> momentOfDig(std::string_view text) {
  const std::vector<std::string_view> words = wordsOf(text);
  if (words.size() < 5) {
    return std::nullopt;
  }
  const auto time = timeOf(words[2], words[1], words.back(), words[3]);
  const bool isUtc = words[4] == "UTC" || words[4] == "GMT";
  return time ? std::optional(Moment{.time = *time, .isUtc = isUtc}) : std::nullopt;
}

/// As web servers do: "Sun, 22 Nov 2026 02:47:13 GMT".
std::optional<Minutes> timeOfServer(std::string_view text) {
  const std::vector<std::string_view> words = wordsOf(text);
  return words.size() < 5 ? std::nullopt : timeOf(words[1], words[2], words[3], words[4]);
}

std::string shownDifference(double minutes) {
  constexpr double minutesADay = 24 * 60;
  if (minutes < minutesADay) {
    return shown(std::floor(minutes)) + " minutes";
  }
  return minutes < 2 * minutesADay ? "more than a day"
                                   : shown(std::floor(minutes / minutesADay)) + " days";
}

Finding wrongClock(const Facts& facts, const std::string& text) {
  return {.text = text,
          .meaning =
              "Secure pages do not open, since certificates seem to be out of date or not yet "
              "valid, and the Skivra may refuse to work.",
          .advice = "Set the clock, and have the machine set it by itself.",
          .evidence = {*facts.system.clockSource}};
}

std::optional<Finding> find(const Facts& facts) {
  const std::optional<Moment> clock = momentOfDig(facts.system.clock);
  if (!clock || !facts.system.clockSource) {
    return std::nullopt;
  }
  const std::optional<Minutes> server = timeOfServer(facts.system.serverClock);
  constexpr int firstYear = 2020;
  if (!server || !facts.system.serverClockSource) {
    if (clock->time >= std::chrono::sys_days(std::chrono::year(firstYear) / 1 / 1)) {
      return std::nullopt;
    }
    return wrongClock(
        facts, "The machine's clock is wrong: it shows " + std::string(facts.system.clock) + ".");
  }
  const double minutes = std::abs(static_cast<double>((clock->time - *server).count()));
  const double minutesMax = clock->isUtc ? 15 : 26 * 60;
  if (minutes < minutesMax) {
    return std::nullopt;
  }
  Finding finding =
      wrongClock(facts, "The machine's clock is wrong by " + shownDifference(minutes) +
                            ": it shows " + std::string(facts.system.clock) + ".");
  finding.evidence.push_back(*facts.system.serverClockSource);
  return finding;
}

const RegisteredRule rule(
    {.id = "clock-wrong", .rank = 220, .subject = Subject::machine, .find = find});

}  // namespace

}  // namespace reader
