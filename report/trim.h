// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Cutting a report down to the size that the submission endpoint accepts.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace report {

/// Stands in place of what was cut out of a section.
inline constexpr std::string_view trimMarker = "<This log has been trimmed>";

/// A copy of `body`, a report in UTF-8, in which every section that holds "tail" loses its end: the
/// whole excess over `sizeMax` bytes, and room for the marker; empty without an excess. Sections
/// too short for that stay whole, so the result may still be too large. Throws std::runtime_error
/// if a cut, measured in UTF-16 code units but made at a byte, falls inside a character.
std::string trimTailData(std::string_view body, std::int32_t sizeMax);

}  // namespace report
