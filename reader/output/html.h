// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// A page that holds everything about one report, and works without any other file.

#pragma once

#include "reader/output/output.h"
#include "reader/output/reading.h"

namespace reader {

/// Writes the page of reader/page/, with the reading as its data.
void writeHtml(Output& output, const ReportReading& reading);

}  // namespace reader
