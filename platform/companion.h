// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The programs and scripts that are installed with this program, for itself alone.

#pragma once

#include <string>

namespace platform {

/// The path of the companion called `name`. Throws as executableFolder() does.
std::string companionPath(const std::string& name);

/// Goes on as the companion called `name`, with the arguments `argv`, the same environment and the
/// same process number. Returns only if that fails, with the error's number. To be called before an
/// Application exists.
int becomeCompanion(const std::string& name, char* const* argv);

}  // namespace platform
