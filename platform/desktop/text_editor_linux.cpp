// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/desktop/text_editor.h"
#include "platform/process/helper_executable.h"

namespace platform {

Command textEditorCommand(const std::string& path) {
  return {.path = helperPath("open_in_text_editor"), .args = {path}};
}

}  // namespace platform
