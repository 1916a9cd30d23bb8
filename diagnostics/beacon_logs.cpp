// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "diagnostics/beacon_logs.h"

#include <algorithm>
#include <tuple>

#include "diagnostics/plan.h"

namespace diagnostics {

std::vector<std::string> beaconLogFolders() {
  const std::string logs = std::string(skivraFolder) + "/beacon-logs/";
  return {logs + "ipblock/", logs + "probe/", logs + "service/"};
}

std::vector<std::string> orderByCreation(const std::string& folder,
                                         std::vector<platform::FolderEntry> entries) {
  std::sort(entries.begin(), entries.end(), [](const auto& left, const auto& right) {
    return std::tie(left.createdNs, left.name) < std::tie(right.createdNs, right.name);
  });
  std::vector<std::string> paths;
  paths.reserve(entries.size());
  for (const platform::FolderEntry& entry : entries) {
    paths.push_back(folder + entry.name);
  }
  return paths;
}

std::string readerCommandLine(const std::string& path) {
  return "cat \"" + path + '"';
}

}  // namespace diagnostics
