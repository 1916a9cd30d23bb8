// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// What this desktop calls the Desktop.

#pragma once

#include <filesystem>

namespace platform {

/// The folder that the user's settings name as the Desktop, whether it is there or not; empty when
/// they name none. `home` is the user's home folder.
std::filesystem::path desktopSetting(const std::filesystem::path& home);

}  // namespace platform
