// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// What the user's desktop does for a program with a window.

#pragma once

#include <memory>
#include <string>

namespace platform {

class Desktop {
 public:
  Desktop() = default;
  virtual ~Desktop() = default;
  Desktop(const Desktop&) = delete;
  Desktop& operator=(const Desktop&) = delete;

  /// Replaces the contents of the general clipboard by `text`.
  virtual void copyToClipboard(const std::string& text) = 0;

  /// Opens `url` in the default browser. What is no URL is ignored.
  virtual void openUrl(const std::string& url) = 0;

  /// Opens the file at `path` in the desktop's editor for plain text, if there is one.
  virtual void openInTextEditor(const std::string& path) = 0;
};

/// The desktop by means of Qt. Needs a QApplication.
std::unique_ptr<Desktop> makeQtDesktop();

}  // namespace platform
