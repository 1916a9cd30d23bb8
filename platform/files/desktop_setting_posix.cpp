// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include <QFile>
#include <QStandardPaths>

#include "platform/files/desktop_setting.h"

namespace platform {

std::filesystem::path desktopSetting(const std::filesystem::path& /*home*/) {
  const QString named = QStandardPaths::writableLocation(QStandardPaths::DesktopLocation);
  return QFile::encodeName(named).toStdString();
}

}  // namespace platform
