// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/companion.h"

#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "platform/executable.h"
#include "platform/process_setup.h"

namespace platform {

std::string companionPath(const std::string& name) {
  namespace fs = std::filesystem;
  const fs::path own = executableFolder();
  const fs::path installed = (own / HALVIK_LIBEXEC_FROM_BIN / name).lexically_normal();
  std::error_code ignored;
  // In a build tree; beside the program, which is where a companion itself finds the others.
  for (const fs::path& path : {own / "libexec" / name, installed, own / name}) {
    if (fs::exists(path, ignored)) {
      return path.string();
    }
  }
  return installed.string();
}

int becomeCompanion(const std::string& name, char* const* argv) {
  const std::string path = companionPath(name);
  restoreStartingDescriptorLimit();
  execv(path.c_str(), argv);
  return errno;
}

}  // namespace platform
