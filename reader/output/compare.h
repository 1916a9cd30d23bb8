// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Two reports of one machine.

#pragma once

#include <string>

#include "reader/output/reading.h"

namespace reader {

/// What is different in the later one.
std::string comparisonOf(const ReportReading& before, const ReportReading& later);

}  // namespace reader
