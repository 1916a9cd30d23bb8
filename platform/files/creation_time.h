// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// When a file or folder was created, as far as the system and the file system tell.

#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace platform {

/// Nanoseconds since 1970 from the creation of what is at `path`, a link itself and not what it
/// names; where no creation time is kept, from the last change of its status. None where nothing
/// is.
std::optional<std::int64_t> creationTimeNs(const std::string& path);

}  // namespace platform
