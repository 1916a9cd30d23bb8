// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// What other programs read; docs/halvik-report.schema.json describes it.

#pragma once

#include <string_view>

#include "reader/output/output.h"
#include "reader/output/reading.h"

namespace reader {

/// Whether the text is to stand inside a page: then no character of it can be taken for markup.
enum class JsonUse { alone, inPage };

/// Writes all of a reading as one line of ASCII. Texts are written in chunks: a report may be
/// as long as memory.
void writeJson(Output& output, const ReportReading& reading, JsonUse use);

}  // namespace reader
