// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// What the user's desktop does for a program with a window.

#pragma once

#include <string>

namespace platform {

/// Replaces the contents of the general clipboard by `text`.
void copyToClipboard(const std::string& text);

/// Opens `url` in the default browser. What is no URL is not opened; nothing is said about it.
void openUrl(const std::string& url);

/// Opens the file at `path` in the desktop's editor for plain text. Nothing is said when there is
/// none.
void openInTextEditor(const std::string& path);

}  // namespace platform
