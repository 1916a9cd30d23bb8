// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The files of reader/page/, which the build puts into the program.

#pragma once

#include <string_view>

namespace reader::page {

extern const std::string_view markup;
extern const std::string_view style;
extern const std::string_view script;
/// In hexadecimal digits.
extern const std::string_view styleSha256;
extern const std::string_view scriptSha256;

}  // namespace reader::page
