// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "reader/parse/block_choice.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <optional>

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

constexpr std::int64_t scoreOfBlock = std::int64_t{1} << 40;
constexpr std::int64_t scoreOfSkipped = -(std::int64_t{1} << 24);
constexpr std::int64_t scoreOfGap = -1;

class Chooser {
 public:
  explicit Chooser(const Plan& asked) : plan(asked), bestAt(asked.blocks().size(), none) {
    skippedBefore.push_back(0);
    for (const PlannedBlock& block : plan.blocks()) {
      const bool isDue = block.part == PlannedBlock::Part::always;
      skippedBefore.push_back(skippedBefore.back() + (isDue ? 1 : 0));
    }
  }

  std::vector<ChosenTitle> choose(const std::vector<Title>& titles) {
    steps.reserve(titles.size());
    for (Index title = 0; title < titles.size(); ++title) {
      addSteps(title, plan.placesOf(titles[title].name));
    }
    return rowOf(titles, bestEnd(titles.size()));
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
    Step step{.score = scoreOfBlock + skipped(none, place) + (title == 0 ? 0 : scoreOfGap),
              .title = title,
              .place = place};
    const auto consider = [&](Index before) {
      if (before == none || !mayFollow(steps[before].place, place)) {
        return;
      }
      const bool isNext = steps[before].title + 1 == title;
      const std::int64_t score = steps[before].score + scoreOfBlock +
                                 skipped(steps[before].place, place) + (isNext ? 0 : scoreOfGap);
      const bool isLater = step.before != none && steps[before].title > steps[step.before].title;
      if (score > step.score || (score == step.score && (isLater || step.before == none))) {
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

  /// For the commands of every run that are skipped between two places.
  std::int64_t skipped(Index before, Index place) const {
    const Index first = before == none ? 0 : before + 1;
    return place < first ? 0 : scoreOfSkipped * (skippedBefore[place] - skippedBefore[first]);
  }

  Index bestEnd(std::size_t titleCount) const {
    Index best = none;
    std::int64_t bestScore = 0;
    for (Index step = 0; step < stepCount(); ++step) {
      const auto end = static_cast<Index>(bestAt.size());
      const std::int64_t score = steps[step].score + skipped(steps[step].place, end) +
                                 (steps[step].title + 1 == titleCount ? 0 : scoreOfGap);
      if (best == none || score >= bestScore) {
        best = step;
        bestScore = score;
      }
    }
    return best;
  }

  std::vector<ChosenTitle> rowOf(const std::vector<Title>& titles, Index end) const {
    std::vector<ChosenTitle> row;
    for (Index step = end; step != none; step = steps[step].before) {
      const PlannedBlock* planned = &plan.blocks()[steps[step].place];
      row.push_back({.title = titles[steps[step].title], .planned = planned});
    }
    std::ranges::reverse(row);
    return row;
  }

  const Plan& plan;
  std::vector<Step> steps;
  // The best step at each place so far, the latest of equal ones.
  std::vector<Index> bestAt;
  // Those of the title before.
  std::array<Index, 2> previousSteps{0, 0};
  std::vector<std::int64_t> skippedBefore;
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
  std::vector<ChosenTitle> row = Chooser(plan).choose(titles);
  if (isMostOfThePlan(row, plan)) {
    markDoubtful(row, titles);
    return row;
  }
  return allTitles(titles, row);
}

}  // namespace reader
