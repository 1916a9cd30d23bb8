// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "diagnostics/process_list.h"

#include <utility>

namespace diagnostics {

ProcessList::ProcessList() {
  processes.reserve(initialCapacity);
}

void ProcessList::append(std::shared_ptr<Process> process) {
  process->countWhenFinished(finished);
  processes.push_back(std::move(process));
}

}  // namespace diagnostics
