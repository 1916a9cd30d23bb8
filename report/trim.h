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

/// A copy of the report `body` in which every section that holds "tail" loses its end: the whole
/// excess of the body over `sizeMax` bytes and room for the marker, from each of them. Sections too
/// short for that, and all others, stay as they are, so that the result may still be too large.
/// Empty when `body` is not larger than `sizeMax`.
///
/// `body` is valid UTF-8. A section is measured in UTF-16 code units but cut at a byte; throws
/// std::runtime_error when such a cut falls inside a character.
std::string trimTailData(std::string_view body, std::int32_t sizeMax);

}  // namespace report
