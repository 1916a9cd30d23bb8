// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/process/executable.h"

#include <QCoreApplication>
#include <QFile>

#include <array>
#include <optional>

namespace platform {

std::filesystem::path executableFolder() {
  // The toolkit knows on each system, but tells an application only.
  std::array<char, 18> name{"halvik-diagnostic"};
  std::array<char*, 2> argv{name.data(), nullptr};
  int argc = 1;
  std::optional<QCoreApplication> toolkit;
  if (QCoreApplication::instance() == nullptr) {
    toolkit.emplace(argc, argv.data());
  }
  return QFile::encodeName(QCoreApplication::applicationDirPath()).toStdString();
}

}  // namespace platform
