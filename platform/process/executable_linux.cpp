// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/process/executable.h"

#include <sys/auxv.h>

#include <bit>
#include <system_error>

namespace platform {

namespace fs = std::filesystem;

fs::path executableFolder() {
  std::error_code failed;
  fs::path own = fs::read_symlink("/proc/self/exe", failed);
  if (failed) {
    // As it was started, which is all that is known where /proc is missing.
    own = fs::canonical(std::bit_cast<const char*>(getauxval(AT_EXECFN)), failed);
  }
  if (failed) {
    // Not the working directory, in which others may have put what has the name of a companion.
    throw std::system_error(failed, "cannot tell where the program is");
  }
  return own.parent_path();
}

}  // namespace platform
