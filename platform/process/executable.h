// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Where this program is.

#pragma once

#include <filesystem>

namespace platform {

/// The folder of the running executable, links resolved. Throws std::system_error where the system
/// does not tell.
std::filesystem::path executableFolder();

}  // namespace platform
