// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The user's desktop by means of Qt.

#pragma once

#include "platform/desktop/desktop.h"

namespace platform {

/// Needs a QApplication.
class QtDesktop final : public Desktop {
 public:
  void copyToClipboard(const std::string& text) override;
  void openUrl(const std::string& url) override;
  void openInTextEditor(const std::string& path) override;
};

}  // namespace platform
