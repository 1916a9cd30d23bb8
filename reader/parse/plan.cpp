// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "reader/parse/plan.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "diagnostics/plan.h"
#include "reader/parse/lines.h"

namespace reader {

namespace {

using Part = PlannedBlock::Part;

// A domain that nobody tests, to see where the plan puts the tested one.
constexpr std::string_view placeholder = "domain.halvik-report";

struct Command {
  std::string key;
  std::string name;
  std::string launchPath;
  std::string comment;
};

class Recorder final : public diagnostics::CommandStarter {
 public:
  using CommandStarter::startTest;
  CommandStarter& named(std::string_view name) override {
    nextKey = name;
    return *this;
  }
  void startTest(const std::string& launchPath, const std::vector<std::string>& args,
                 const std::optional<std::string>& comment) override {
    Command command{.key = std::exchange(nextKey, ""),
                    .name = launchPath,
                    .launchPath = launchPath,
                    .comment = comment.value_or("")};
    for (const std::string& arg : args) {
      command.name += ' ' + arg;
    }
    if (comment) {
      command.name += ' ' + *comment;
    }
    commands.push_back(std::move(command));
  }

  std::vector<Command> commands;

 private:
  std::string nextKey;
};

std::string kindOf(const Command& command) {
  constexpr std::array<std::pair<std::string_view, std::string_view>, 6> shellTools{{
      {"/usr/bin/tail ", "system_log"},
      {"/usr/bin/curl ", "curl"},
      {"/sbin/ping ", "ping"},
      {"/sbin/route ", "route"},
      {"/bin/ls ", "ls"},
      {"/bin/cat ", "cat"},
  }};
  std::string tool = command.launchPath.substr(command.launchPath.rfind('/') + 1);
  if (tool == "sh") {
    for (const auto& [part, kind] : shellTools) {
      if (contains(command.name, part)) {
        return std::string(kind);
      }
    }
  }
  return tool;
}

// What the plan gives no name is called after its tool and its router: that with the comment "(palo
// alto router)" is "ping-palo-alto".
std::string keyOf(const Command& command) {
  if (!command.key.empty()) {
    return command.key;
  }
  std::string key = kindOf(command);
  if (const auto city = between(command.comment, "(", " router)")) {
    key += '-';
    key += *city;
  }
  std::ranges::replace(key, ' ', '-');
  return key;
}

PlannedBlock plannedBlock(const Command& command, Part part) {
  PlannedBlock block{.key = keyOf(command),
                     .kind = kindOf(command),
                     .prefix = command.name,
                     .suffix = {},
                     .part = part};
  const std::size_t at = command.name.find(placeholder);
  if (at != std::string::npos) {
    block.prefix = command.name.substr(0, at);
    block.suffix = command.name.substr(at + placeholder.size());
    block.hasWord = true;
    if (part == Part::always) {
      block.part = Part::domain;
    }
  }
  return block;
}

void addCommands(std::vector<PlannedBlock>& blocks, const Recorder& recorder, Part part) {
  for (const Command& command : recorder.commands) {
    blocks.push_back(plannedBlock(command, part));
  }
}

void addLogs(std::vector<PlannedBlock>& blocks) {
  for (const std::string& folder : diagnostics::beaconLogFolders()) {
    // The command line of a file without a name, but for the quotation mark at its end.
    std::string commandLine = "/bin/sh -c " + diagnostics::readerCommandLine(folder);
    commandLine.pop_back();
    blocks.push_back({.key = "log",
                      .kind = "log",
                      .prefix = std::move(commandLine),
                      .suffix = "\"",
                      .hasWord = true,
                      .isRepeated = true,
                      .part = Part::skivraPerhaps});
  }
}

}  // namespace

Plan::Plan(const diagnostics::Endpoints& endpoints) {
  const std::string domain(placeholder);
  Recorder general;
  diagnostics::startGeneralTests(general, endpoints, domain);
  addCommands(planned, general, Part::always);
  // Without any domain, the first query of this part has no arguments.
  Recorder bareSkivra;
  diagnostics::startSkivraTests(bareSkivra, endpoints, std::nullopt);
  planned.push_back(plannedBlock(bareSkivra.commands.at(0), Part::skivraPerhaps));
  Recorder skivra;
  diagnostics::startSkivraTests(skivra, endpoints, domain);
  const std::size_t firstOfSkivra = planned.size();
  addCommands(planned, skivra, Part::skivra);
  planned[firstOfSkivra].part = Part::skivraPerhaps;
  addLogs(planned);
  Recorder last;
  constexpr int linesOfSystemLog = 15000;
  diagnostics::startSystemLogAndBlockingTests(last, endpoints, linesOfSystemLog);
  addCommands(planned, last, Part::skivra);

  for (std::size_t place = 0; place < planned.size(); ++place) {
    if (planned[place].hasWord) {
      placesWithWord.push_back(place);
    } else {
      places[planned[place].prefix].push_back(place);
    }
  }
}

std::vector<std::size_t> Plan::placesOf(std::string_view name) const {
  std::vector<std::size_t> found;
  for (const std::size_t place : placesWithWord) {
    if (!wordIn(planned[place], name).empty()) {
      found.push_back(place);
    }
  }
  if (const auto exact = places.find(name); exact != places.end()) {
    found.insert(found.end(), exact->second.begin(), exact->second.end());
    std::ranges::sort(found);
  }
  return found;
}

std::string_view wordIn(const PlannedBlock& planned, std::string_view name) {
  if (!planned.hasWord || name.size() <= planned.prefix.size() + planned.suffix.size() ||
      !name.starts_with(planned.prefix) || !name.ends_with(planned.suffix)) {
    return {};
  }
  name.remove_prefix(planned.prefix.size());
  name.remove_suffix(planned.suffix.size());
  // A log may have any name. A tested domain has a dot and no blank, and is no server.
  if (!planned.isRepeated && (contains(name, " ") || !contains(name, ".") || name[0] == '@')) {
    return {};
  }
  return name;
}

}  // namespace reader
