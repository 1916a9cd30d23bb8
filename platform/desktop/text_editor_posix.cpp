// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/desktop/text_editor.h"

namespace platform {

Command textEditorCommand(const std::string& path) {
#ifdef __APPLE__
  return {.path = "/usr/bin/open", .args = {"-t", path}};
#else
  return {.path = "xdg-open", .args = {path}};
#endif
}

}  // namespace platform
