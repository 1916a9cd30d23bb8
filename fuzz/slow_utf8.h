// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// UTF-8, one byte after the other: what the program's fast ways are compared with. Shares nothing
// with them.

#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace fuzz {

/// The characters of `bytes`, or nothing when they are not valid UTF-8.
std::optional<std::u32string> decode(std::string_view bytes);

/// The characters that are whole in `bytes`, whatever stands between them.
std::u32string decodeWhatIsWhole(std::string_view bytes);

std::string encode(std::u32string_view characters);

}  // namespace fuzz
