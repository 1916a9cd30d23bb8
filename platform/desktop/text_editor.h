// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The desktop's editor for plain text.

#pragma once

#include <string>

#include "platform/process/tools.h"

namespace platform {

/// The command that opens the file at `path` in the desktop's application for plain text, whatever
/// the file's contents look like.
Command textEditorCommand(const std::string& path);

}  // namespace platform
