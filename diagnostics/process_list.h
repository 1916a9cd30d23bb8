// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The commands of one run.

#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "diagnostics/process.h"

namespace diagnostics {

/// Processes in launch order. It knows how many of them have finished without asking each one,
/// since that is asked at every end of a command and a run may have thousands. Copies share their
/// processes.
class ProcessList {
 public:
  /// The room reserved in a new list.
  static constexpr std::size_t initialCapacity = 20;

  ProcessList();

  /// Adds `process`, which must not have been started yet.
  void append(std::shared_ptr<Process> process);

  std::size_t size() const { return processes.size(); }
  std::uint32_t finishedCount() const { return *finished; }

  auto begin() const { return processes.begin(); }
  auto end() const { return processes.end(); }

 private:
  std::vector<std::shared_ptr<Process>> processes;
  std::shared_ptr<std::uint32_t> finished = std::make_shared<std::uint32_t>(0);
};

}  // namespace diagnostics
