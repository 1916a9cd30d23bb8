// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// What a person reads on a terminal.

#pragma once

#include <string>
#include <vector>

#include "reader/output/reading.h"

namespace reader {

/// The findings of one report, with their evidence, and its main facts.
std::string textOf(const ReportReading& reading);

}  // namespace reader
