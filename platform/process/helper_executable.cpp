// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/process/helper_executable.h"

#include <dlfcn.h>
#include <unistd.h>
#include <uv.h>

#include <array>
#include <cerrno>
#include <climits>
#include <filesystem>
#include <system_error>

#include "platform/process/process_setup.h"

namespace platform {

namespace {

// The folder of the running executable, also if that has been replaced meanwhile. Not the working
// directory where the system does not say: others may have put a file there that is named like a
// helper.
std::filesystem::path executableFolder() {
  std::array<char, PATH_MAX> path;
  std::size_t size = path.size();
  if (const int result = uv_exepath(path.data(), &size); result < 0) {
    throw std::system_error(-result, std::generic_category(), "cannot tell where the program is");
  }
  return std::filesystem::path(std::string(path.data(), size)).parent_path();
}

}  // namespace

std::string helperPath(const std::string& name) {
  namespace fs = std::filesystem;
  const fs::path own = executableFolder();
  const fs::path installed = (own / HALVIK_LIBEXEC_FROM_BIN / name).lexically_normal();
  std::error_code ignored;
  // In a build tree; installed; beside the program, where a helper itself finds the others.
  for (const fs::path& path : {own / "libexec" / name, installed, own / name}) {
    if (fs::exists(path, ignored)) {
      return path.string();
    }
  }
  return installed.string();
}

int executeHelper(const std::string& name, char* const* argv) {
  const std::string path = helperPath(name);
  restoreStartingDescriptorLimit();
  execv(path.c_str(), argv);
  return errno;
}

std::string windowLibraryProblem() {
  return dlopen(HALVIK_WINDOW_LIBRARY, RTLD_LAZY) != nullptr
             ? ""
             : std::string(dlerror()) + "; install the package " HALVIK_WINDOW_PACKAGE;
}

}  // namespace platform
