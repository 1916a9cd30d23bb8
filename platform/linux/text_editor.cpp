// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/text_editor.h"

#include "platform/companion.h"

namespace platform {

Command textEditorCommand(const std::string& path) {
  return {.path = companionPath("open_in_text_editor"), .args = {path}};
}

}  // namespace platform
