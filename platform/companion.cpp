// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/companion.h"

#include <QCoreApplication>
#include <QFile>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <vector>

#include "platform/process_setup.h"

namespace platform {

std::string companionPath(const std::string& name) {
  namespace fs = std::filesystem;
  const fs::path own = QFile::encodeName(QCoreApplication::applicationDirPath()).toStdString();
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

int becomeCompanion(const std::string& name, int argc, char** argv) {
  std::string path;
  {
    // The toolkit knows where a program is, on each system, and takes out arguments of its own.
    std::vector<char*> arguments(argv, argv + argc + 1);
    const QCoreApplication toolkit(argc, arguments.data());
    path = companionPath(name);
  }
  restoreStartingDescriptorLimit();
  execv(path.c_str(), argv);
  return errno;
}

}  // namespace platform
