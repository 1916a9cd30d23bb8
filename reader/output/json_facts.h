// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The facts as JSON.

#pragma once

#include <nlohmann/json_fwd.hpp>

#include "reader/output/reading.h"

namespace reader {

nlohmann::ordered_json factsObject(const ReportReading& reading);

}  // namespace reader
