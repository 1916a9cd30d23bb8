// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "reader/parse/block_choice.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <string_view>

namespace reader {

namespace {

using Index = std::uint32_t;

constexpr Index none = std::numeric_limits<Index>::max();

/// A title at one of its places, and the best row of titles that ends with it. Small, as a report
/// may have millions.
struct Step {
  std::int64_t score = 0;
  Index title = 0;
  Index place = 0;
  Index before = none;
};

// Of several rows with the most commands of every run, the best one leaves out the fewest titles
// outside foreign text, then titles at the fewest places, and then has the most other blocks. Of
// equal ones it is the latest: a forged report in a page comes before the real blocks behind it.
constexpr std::int64_t scoreOfBlock = std::int64_t{1} << 40;
constexpr std::int64_t scoreOfStrangeGap = -4 * scoreOfBlock;
constexpr std::int64_t scoreOfGap = -(std::int64_t{1} << 24);
// The last block of most runs holds no foreign text: a page has forged one behind it.
constexpr std::int64_t scoreOfGapAtEnd = 2 * scoreOfGap;
constexpr std::int64_t scoreOfOtherBlock = 1;

/// Whether what a command prints is the text of others, in which titles may stand.
bool printsForeignText(const PlannedBlock& block) {
  return block.kind == "curl" || block.kind == "log" || block.kind == "system_log";
}

class Chooser {
 public:
  Chooser(const Plan& asked, const std::vector<Title>& found)
      : plan(asked), titles(found), bestAt(asked.blocks().size(), none) {
    for (const PlannedBlock& block : plan.blocks()) {
      gapsBehind.push_back(printsForeignText(block) ? scoreOfGap : scoreOfStrangeGap);
    }
  }

  std::vector<ChosenTitle> choose() {
    // A vector that grows is in memory twice.
    known.reserve(titles.size());
    steps.reserve(titles.size());
    for (Index title = 0; title < titles.size(); ++title) {
      const std::vector<std::size_t> places = plan.placesOf(titles[title].name);
      if (!places.empty()) {
        addSteps(static_cast<Index>(known.size()), places);
        known.push_back(title);
      }
    }
    return rowTo(bestEnd());
  }

 private:
  void addSteps(Index title, const std::vector<std::size_t>& places) {
    const Index first = stepCount();
    for (const std::size_t place : places) {
      steps.push_back(bestStep(title, static_cast<Index>(place)));
    }
    // Only now: a title has one place.
    for (Index step = first; step < stepCount(); ++step) {
      Index& best = bestAt[steps[step].place];
      if (best == none || steps[step].score >= steps[best].score) {
        best = step;
      }
    }
    previousSteps = {first, stepCount()};
  }

  Index stepCount() const { return static_cast<Index>(steps.size()); }

  Step bestStep(Index title, Index place) const {
    const PlannedBlock& block = plan.blocks()[place];
    const std::int64_t own =
        block.part == PlannedBlock::Part::always ? scoreOfBlock : scoreOfOtherBlock;
    Step step{.score = own + (title == 0 ? 0 : scoreOfStrangeGap), .title = title, .place = place};
    const auto consider = [&](Index before) {
      if (before == none || !mayFollow(steps[before].place, place)) {
        return;
      }
      const Step& last = steps[before];
      const std::int64_t score =
          last.score + own + (last.title + 1 == title ? 0 : gapsBehind[last.place]);
      const bool isLater = step.before == none || last.title > steps[step.before].title;
      if (score > step.score || (score == step.score && isLater)) {
        step.score = score;
        step.before = before;
      }
    };
    for (Index other = 0; other <= place; ++other) {
      consider(bestAt[other]);
    }
    for (Index other = previousSteps[0]; other < previousSteps[1]; ++other) {
      consider(other);
    }
    return step;
  }

  bool mayFollow(Index before, Index place) const {
    return before < place || (before == place && plan.blocks()[place].isRepeated);
  }

  std::int64_t scoreAsEnd(const Step& step) const {
    if (step.title + 1 == known.size()) {
      return step.score;
    }
    return step.score + std::min(scoreOfGapAtEnd, gapsBehind[step.place]);
  }

  Index bestEnd() const {
    Index best = none;
    for (Index step = 0; step < stepCount(); ++step) {
      if (best == none || scoreAsEnd(steps[step]) >= scoreAsEnd(steps[best])) {
        best = step;
      }
    }
    return best;
  }

  std::vector<ChosenTitle> rowTo(Index end) const {
    std::vector<ChosenTitle> row;
    for (Index step = end; step != none; step = steps[step].before) {
      const PlannedBlock* planned = &plan.blocks()[steps[step].place];
      row.push_back({.title = titles[known[steps[step].title]], .planned = planned});
    }
    std::ranges::reverse(row);
    return row;
  }

  const Plan& plan;
  const std::vector<Title>& titles;
  /// Those that the plan has. Others are a part of what they stand in.
  std::vector<Index> known;
  std::vector<Step> steps;
  // The best step at each place so far, the latest of equal ones.
  std::vector<Index> bestAt;
  // Those of the title before.
  std::array<Index, 2> previousSteps{0, 0};
  /// By place: what it costs to leave titles out behind a block.
  std::vector<std::int64_t> gapsBehind;
};

/// Marks those that have the name of another title.
void markDoubtful(std::vector<ChosenTitle>& row, const std::vector<Title>& titles) {
  std::map<std::string_view, int> counts;
  for (const ChosenTitle& chosen : row) {
    counts[chosen.title.name] = 0;
  }
  for (const Title& title : titles) {
    if (const auto count = counts.find(title.name); count != counts.end()) {
      ++count->second;
    }
  }
  for (ChosenTitle& chosen : row) {
    chosen.isDoubtful = counts[chosen.title.name] > 1;
  }
}

bool isMostOfThePlan(const std::vector<ChosenTitle>& row, const Plan& plan) {
  const auto isAlways = [](const PlannedBlock& block) {
    return block.part == PlannedBlock::Part::always;
  };
  const auto found = std::ranges::count_if(
      row, [&](const ChosenTitle& chosen) { return isAlways(*chosen.planned); });
  return 2 * found > std::ranges::count_if(plan.blocks(), isAlways);
}

/// All titles, those of `row` with their places.
std::vector<ChosenTitle> allTitles(const std::vector<Title>& titles,
                                   const std::vector<ChosenTitle>& row) {
  std::vector<ChosenTitle> all;
  all.reserve(titles.size());
  auto next = row.begin();
  for (const Title& title : titles) {
    if (next != row.end() && next->title.offset == title.offset) {
      all.push_back(*next++);
    } else {
      all.push_back({.title = title});
    }
  }
  return all;
}

}  // namespace

std::vector<ChosenTitle> chooseTitles(const std::vector<Title>& titles, const Plan& plan) {
  std::vector<ChosenTitle> row = Chooser(plan, titles).choose();
  if (isMostOfThePlan(row, plan)) {
    markDoubtful(row, titles);
    return row;
  }
  return allTitles(titles, row);
}

}  // namespace reader
